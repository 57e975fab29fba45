#pragma once

#include "entry.h"
#include "message_count.h"
#include "read_bytes.h"

#include <velmoext1/log_reader.h>

#include <boost/shared_ptr.hpp>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmolog
{

/// Reads the messages of a log that is being changed, each once.
///
/// A recorder's start replaces the text after the last complete message. So a message counts only
/// if all bytes that were read since the previous one are still in the file after it was read.
class stable_reader_t
{
public:
    enum class result_t
    {
        nothing, ///< new for now
        more,    ///< can be read at once
        replaced ///< Messages that were read are no longer in the file as they were. Remains so
                 ///< until go_back_before_damage() or begin_again().
    };

    /// The log's name is for the entries. The descriptor must outlive the object.
    stable_reader_t(std::string log, int descriptor);

    /// Appends the next messages, some hundred at most. A thorough comparison of the earlier text
    /// reads the file from its beginning.
    result_t read(bool is_thorough, std::vector<entry_t>& entries);

    /// Continues before the first damage, if only the text from there on was replaced. Returns
    /// whether it was.
    bool go_back_before_damage();
    /// Reads from the beginning and leaves out as many messages.
    void begin_again(std::uint64_t skipped);
    /// Returns how many messages are to be left out if the log is rewritten from now on.
    std::uint64_t carried() const { return m_position.count.carried() + m_skipped; }

    /// Returns when to read again, although the file does not change: a long unfinished message is
    /// looked at for a tenth of the time only.
    std::chrono::steady_clock::time_point next_look() const { return m_next_look; }

    /// Returns the first message that was read; null if there is none, or it was left out.
    const boost::shared_ptr<velmoext_1_4_8::message_t>& first() const { return m_first; }
    /// Returns whether any damage was read.
    bool has_damage() const { return m_has_damage; }
    /// Returns whether the root has ended.
    bool has_ended() const { return m_has_ended; }

private:
    typedef velmoext_1_4_8::log_reader_t log_reader_t;
    typedef std::chrono::steady_clock steady_clock_t;

    /// A position between two messages, and the messages before it.
    struct position_t
    {
        log_reader_t::position_t at;
        message_count_t count;
    };

    /// Messages that were read, but not yet compared with the file.
    struct batch_t
    {
        std::vector<entry_t> entries;
        std::uint64_t skipped = 0; ///< messages that are still to be left out
        position_t end;            ///< of the last message
        std::int64_t known = 0;    ///< offset before which nothing is read again
        log_reader_t::result_t result = log_reader_t::result_t::message;
        std::optional<position_t> first_damage;
    };

    std::size_t read_source(char* bytes, std::size_t size);
    batch_t collect();
    void add_message(batch_t& batch);
    void add_damage(batch_t& batch) const;
    void accept(batch_t& batch, std::vector<entry_t>& entries);
    void restart();
    void read_from(const position_t& position, const checked_bytes_t& bytes);

    std::string m_log;
    int m_descriptor;
    read_bytes_t m_bytes;
    std::unique_ptr<log_reader_t> m_reader;
    position_t m_position;       ///< the end of the last message
    std::uint64_t m_skipped = 0; ///< messages that are still to be left out
    boost::shared_ptr<velmoext_1_4_8::message_t> m_first;
    std::optional<position_t> m_first_damage;
    checked_bytes_t m_bytes_before_damage;
    steady_clock_t::time_point m_next_look;
    bool m_has_ended = false;
    bool m_has_damage = false;
};

} // namespace velmolog

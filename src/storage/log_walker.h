#pragma once

#include "xml/limits.h"

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace velmoext_1_4_8
{

class log_sax_reader;

/// Walks through the text of one log and hands the messages in it to a log_sax_reader, as one parse
/// of the whole text would. Requires memory for the largest element only.
///
/// Each element directly below the root is read by itself: a message in the library's written
/// form directly, anything else in a small document of its own with the same root. The events of
/// such documents are those of the whole text up to its first fault. A log with a document type, or
/// in another encoding than UTF-8, is parsed whole.
class log_walker_t
{
public:
    /// Receives lines of the log, see measure_stable_lines().
    typedef std::function<void(std::string_view)> lines_callback_t;

    /// The reader must outlive the walker. A callback that is not empty receives the messages in
    /// stable lines instead of the reader.
    explicit log_walker_t(log_sax_reader& reader, lines_callback_t callback = lines_callback_t())
        : m_reader(reader), m_lines_callback(std::move(callback))
    {}
    log_walker_t(const log_walker_t&) = delete;
    log_walker_t& operator=(const log_walker_t&) = delete;
    ~log_walker_t() = default;

    /// Continues with the text that follows what was walked before. Returns how many of its bytes
    /// were walked: the next call passes the others again, and more after them unless this was the
    /// last part. Propagates the exceptions of a message's callback.
    std::size_t walk(std::string_view text, bool is_last);

    /// Returns whether nothing that follows counts: the root has ended, or there was a fault.
    bool is_finished() const { return m_is_finished; }

    /// Returns the limit for which something was not read, if any.
    refusal_t refusal() const { return m_refusal; }

private:
    std::size_t find_beginning(std::string_view text, bool is_last);
    std::size_t walk_elements(std::string_view text, bool is_last);
    std::string_view find_stable_lines(std::string_view text, std::size_t element) const;
    void on_message(const boost::shared_ptr<message_t>& message);
    void on_lines(std::string_view lines) const;
    std::size_t parse_elements(std::string_view text, std::size_t begin, std::size_t end,
                               bool is_own);
    void parse_rest(std::string_view rest);
    void parse_whole(std::string_view text);
    bool is_within_limits(std::string_view markup);

    log_sax_reader& m_reader;
    lines_callback_t m_lines_callback;
    bool m_reads_elements = false; ///< one by one
    bool m_is_whole = false;       ///< whether the log is parsed whole
    bool m_is_finished = false;
    refusal_t m_refusal = refusal_t::none;
};

} // namespace velmoext_1_4_8

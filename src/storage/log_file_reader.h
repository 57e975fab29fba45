#pragma once

#include "storage/log_sax_reader.h"
#include "storage/log_walker.h"
#include "xml/limits.h"

#include <cstdint>
#include <string>

namespace velmoext_1_4_8
{

class file_descriptor_t;

/// Reads what is new in a log file since its last read, and hands over the messages in it. Keeps
/// the largest message in memory, not the log. Callers must serialize access.
class log_file_reader
{
public:
    /// The name is UTF-8. Opens nothing.
    explicit log_file_reader(std::string file_name);

    /// Replaces the callback, see log_sax_reader::set_callback().
    void set_callback(const log_sax_reader::message_callback_t& callback);

    /// Has the messages in stable lines handed over as these lines, see measure_stable_lines().
    void set_lines_callback(const log_walker_t::lines_callback_t& callback);

    /// Reads from position() up to the end of the file; the text after the last '>' is dropped.
    /// Returns true for a damaged text too: the messages before the damage have been handed over.
    ///
    /// Returns false, with nothing handed over, when there is nothing new or no '>' in it, or when
    /// the file cannot be read or has become shorter; of these only a text without a '>' moves the
    /// position. Propagates the callback's exceptions. Throws std::bad_alloc if libxml2 runs out of
    /// memory. In both cases the position is past the text.
    bool parse();
    /// Does the same with a file that is open to read.
    bool parse(const file_descriptor_t& file);

    /// The limit that ended the last parse() early, if any.
    refusal_t refusal() const { return m_refusal; }

    /// The offset at which the next parse() starts, in bytes.
    std::int64_t position() const { return m_position; }

private:
    bool parse_between(const file_descriptor_t& file, std::int64_t begin, std::int64_t end);

    std::int64_t m_position = 0;
    std::string m_file_name;
    log_sax_reader m_sax;
    log_walker_t::lines_callback_t m_lines_callback;
    refusal_t m_refusal = refusal_t::none;
};

} // namespace velmoext_1_4_8

#pragma once

#include "storage/log_sax_reader.h"

#include <cstdint>
#include <string>

namespace velmoext_1_4_8
{

/// Reads what is new in a log file since its last read, and hands the messages in it over. One
/// thread at a time may use it.
class log_file_reader
{
public:
    /// The name is UTF-8. Opens nothing.
    explicit log_file_reader(std::string file_name);

    /// Who gets the messages from now on, see log_sax_reader::set_callback().
    void set_callback(const log_sax_reader::message_callback_t& callback);

    /// Reads on from where the last parse() stopped, up to the end of the file; what follows the
    /// last '>' is dropped. False, with nothing handed over, where there is nothing new or no '>'
    /// in it, the file cannot be read or has become shorter, or the new part is longer than an int
    /// can tell; of these only a text without a '>' moves the position. True for damaged text too:
    /// the messages before the damage have been handed over. What the callback throws passes out.
    bool parse();

    /// See log_sax_reader::has_lacked_memory().
    bool has_lacked_memory() const { return m_sax.has_lacked_memory(); }

    /// Where the next parse() goes on, in bytes.
    std::int64_t position() const { return m_position; }

private:
    std::string read_new_text();

    std::int64_t m_position = 0;
    std::string m_file_name;
    log_sax_reader m_sax;
};

} // namespace velmoext_1_4_8

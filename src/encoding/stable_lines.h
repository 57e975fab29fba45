#pragma once

#include <velmoext1/message.h>

#include <cstddef>
#include <string_view>

namespace velmoext_1_4_8
{

/// Returns the size of the lines at the beginning of a log's text that would be the same if the
/// messages in them were read and written again; 0 when there are none. Builds no message.
///
/// Measures whole messages of plain text, which nearly all are, without colons in names.
std::size_t measure_stable_lines(std::string_view text);

/// The lines of a message, with the texts by which most messages are searched. All are plain.
struct message_lines_t
{
    std::size_t size = 0; ///< in bytes, with the indentation and the last line's end
    std::size_t count = 0;
    message_t::severity_t severity = message_t::none;
    std::string_view type;
    std::string_view tool; ///< the source
};

/// Returns the lines of the first message that measure_stable_lines() measures; their size is 0
/// when there is none.
message_lines_t find_stable_message(std::string_view text);

} // namespace velmoext_1_4_8

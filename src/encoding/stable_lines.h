#pragma once

#include <cstddef>
#include <string_view>

namespace velmoext_1_4_8
{

/// Returns the size of the lines at the beginning of a log's text that would be the same if the
/// messages in them were read and written again; 0 when there are none. Builds no message.
///
/// Measures whole messages of plain text, which nearly all are, without colons in names.
std::size_t measure_stable_lines(std::string_view text);

} // namespace velmoext_1_4_8

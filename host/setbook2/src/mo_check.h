#pragma once

#include <vector>

namespace setbook2
{

/// Returns whether the bytes are a `.mo` file with valid offsets only; Boost.Locale checks few of
/// them. Accepts only the default output of msgfmt for a UTF-8 file, so that the texts are looked
/// up without conversion.
bool is_valid_mo(const std::vector<char>& bytes);

} // namespace setbook2

#pragma once

#include <unicode/umachine.h>

#include <string>
#include <string_view>

namespace app_common
{

/// Returns whether the character has an effect instead of a shape: controls, marks of direction,
/// separators of lines, characters that are displayed as nothing or that Unicode does not define.
bool is_invisible(UChar32 character);

/// Returns the text without characters that a terminal would execute or hide: control characters
/// and invisible marks as `\xHH` or `\uHHHH`, and each byte that is not UTF-8 as `\xHH`.
std::string escape_controls(std::string_view text);

} // namespace app_common

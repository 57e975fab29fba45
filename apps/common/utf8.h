#pragma once

#include <unicode/umachine.h>

#include <cstddef>
#include <string_view>

namespace app_common
{

/// Returns the character at `next`, negative if the bytes there are not UTF-8, and advances `next`
/// after it. Requires that `next` is less than the size.
UChar32 next_character(std::string_view text, std::size_t& next);

} // namespace app_common

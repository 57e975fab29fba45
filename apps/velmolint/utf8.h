#pragma once

#include <unicode/umachine.h>

#include <cstddef>
#include <string>

namespace velmolint
{

/// Returns the character at `next`, negative if the bytes there are not UTF-8, and advances `next`
/// after it. Requires that `next` is less than the size.
UChar32 next_character(const std::string& text, std::size_t& next);

} // namespace velmolint

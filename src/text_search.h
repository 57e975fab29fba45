#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{

/// Where the first of these signs stands; the text's size where none does.
inline std::size_t find_any(const std::string& text, const char* signs, std::size_t from)
{
    return std::min(text.find_first_of(signs, from), text.size());
}

} // namespace velmoext_1_4_8

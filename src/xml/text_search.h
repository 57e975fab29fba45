#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

namespace velmoext_1_4_8
{

/// Where the first of these signs stands; the text's size where none does.
inline std::size_t find_any(const std::string& text, const char* signs, std::size_t from)
{
    return std::min(text.find_first_of(signs, from), text.size());
}

inline bool begins_with(const std::string& text, std::size_t at, const char* beginning)
{
    return text.compare(at, std::strlen(beginning), beginning) == 0;
}

/// Whether it is white space, as XML knows it.
inline bool is_blank(char sign)
{
    return sign == ' ' || sign == '\t' || sign == '\r' || sign == '\n';
}

/// Where what follows the first such end begins; the text's size where there is none.
inline std::size_t find_behind(const std::string& text, const char* end, std::size_t from)
{
    const std::size_t found = text.find(end, from);
    return found == std::string::npos ? text.size() : found + std::strlen(end);
}

} // namespace velmoext_1_4_8

#pragma once

#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{

inline std::string repeated(const std::string& text, std::size_t count)
{
    std::string result;
    result.reserve(text.size() * count);
    for (; count != 0; --count)
        result += text;
    return result;
}

/// Returns each number from 0 on between two texts.
inline std::string numbered(const std::string& before, std::size_t count, const std::string& after)
{
    std::string result;
    for (std::size_t number = 0; number != count; ++number)
        result += before + std::to_string(number) + after;
    return result;
}

} // namespace velmoext_1_4_8

#include "text_pattern.h"

#include <algorithm>
#include <cstddef>

namespace velmolog
{
namespace
{

constexpr char mark = '\1';

// They bound the cost of the search for values.
constexpr std::size_t max_text_bytes = 10000;
constexpr std::size_t max_value_bytes = 500;
constexpr std::size_t max_values = 8;

constexpr std::size_t min_value_bytes = 4; ///< shorter ones are in many words by chance

void replace_all(std::string& text, const std::string& old_text, const std::string& new_text)
{
    for (std::size_t at = text.find(old_text); at != std::string::npos;
         at = text.find(old_text, at + new_text.size()))
        text.replace(at, old_text.size(), new_text);
}

/// Returns whether the value can be replaced. One with a mark could be found in other marks.
bool is_replaced(const std::string& value)
{
    return min_value_bytes <= value.size() && value.size() <= max_value_bytes &&
           value.find(mark) == std::string::npos;
}

} // namespace

std::string text_pattern(const std::string& text, const std::vector<std::string>& values)
{
    std::string pattern;
    for (const char byte : text)
        pattern.append(1, byte).append(byte == mark ? "~" : "");
    if (text.size() > max_text_bytes)
        return pattern;
    for (std::size_t i = 0; i < std::min(values.size(), max_values); ++i)
        if (is_replaced(values[i]))
            replace_all(pattern, values[i], {mark, static_cast<char>('a' + i)});
    return pattern;
}

} // namespace velmolog

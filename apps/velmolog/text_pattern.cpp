#include "text_pattern.h"

#include <algorithm>
#include <cstddef>

namespace velmolog
{
namespace
{

constexpr char mark = '\x7F';

// They bound the cost of the search for values.
constexpr std::size_t max_text_bytes = 10000;
constexpr std::size_t max_value_bytes = 500;
constexpr std::size_t max_values = 8;

constexpr std::size_t min_value_bytes = 4; ///< shorter ones are in many words by chance

std::string replace_all(const std::string& text, const std::string& old_text,
                        const std::string& new_text)
{
    std::string result;
    std::size_t begin = 0;
    for (std::size_t end = text.find(old_text); end != std::string::npos;
         end = text.find(old_text, begin)) {
        result.append(text, begin, end - begin).append(new_text);
        begin = end + old_text.size();
    }
    return result + text.substr(begin);
}

/// Returns whether the value can be replaced. Without U+007F, and longer than the letter of a mark,
/// it is not found in marks.
bool is_replaced(const std::string& value)
{
    return min_value_bytes <= value.size() && value.size() <= max_value_bytes &&
           value.find(mark) == std::string::npos;
}

} // namespace

std::string text_pattern(const std::string& text, const std::vector<std::string>& values)
{
    std::string pattern = replace_all(text, {mark}, {mark, '~', mark});
    if (text.size() > max_text_bytes)
        return pattern;
    for (std::size_t i = 0; i < std::min(values.size(), max_values); ++i)
        if (is_replaced(values[i]))
            pattern = replace_all(pattern, values[i], {mark, static_cast<char>('a' + i), mark});
    return pattern;
}

} // namespace velmolog

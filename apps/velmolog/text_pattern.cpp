#include "text_pattern.h"

#include <algorithm>
#include <cstddef>

namespace velmolog
{
namespace
{

constexpr char mark = '\x1';
constexpr char first_value = '\x10';
constexpr char mark_itself = '\x18';

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

/// Returns whether the byte can be in a mark.
bool is_of_mark(char byte)
{
    return byte == mark || (first_value <= byte && byte <= mark_itself);
}

/// Returns whether the value can be replaced, and is not found in the marks of others.
bool is_replaced(const std::string& value)
{
    return min_value_bytes <= value.size() && value.size() <= max_value_bytes &&
           std::none_of(value.begin(), value.end(), is_of_mark);
}

} // namespace

std::string text_pattern(const std::string& text, const std::vector<std::string>& values)
{
    std::string pattern;
    for (const char byte : text) {
        pattern += byte;
        if (byte == mark)
            pattern += mark_itself;
    }
    if (text.size() > max_text_bytes)
        return pattern;
    for (std::size_t i = 0; i < std::min(values.size(), max_values); ++i)
        if (is_replaced(values[i]))
            pattern = replace_all(pattern, values[i], {mark, static_cast<char>(first_value + i)});
    return pattern;
}

} // namespace velmolog

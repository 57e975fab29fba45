#include "output_text.h"

#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>

namespace velmolint
{
namespace
{

constexpr std::size_t max_quoted_bytes = 80;
constexpr std::size_t max_listed = 10;

const char white_space[] = " \t\r\n\f\v";

/// Returns the largest size up to `most` that splits no character.
std::size_t whole_characters(const std::string& text, std::size_t most)
{
    while (most != 0 && U8_IS_TRAIL(static_cast<std::uint8_t>(text[most])))
        --most;
    return most;
}

} // namespace

std::string shortened(const std::string& text)
{
    if (text.size() <= max_quoted_bytes)
        return text;
    return text.substr(0, whole_characters(text, max_quoted_bytes)) + "...";
}

std::string in_quotes(const std::string& text)
{
    return "\"" + shortened(text) + "\"";
}

std::string listed(const std::set<std::string>& words, const std::string& begin,
                   const std::string& end)
{
    std::string result;
    std::size_t count = 0;
    for (const std::string& word : words) {
        if (count != 0)
            result += ", ";
        if (count++ == max_listed)
            return result + "...";
        result.append(begin).append(shortened(word)).append(end);
    }
    return result;
}

std::string trimmed(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(white_space);
    if (begin == std::string::npos)
        return std::string();
    return text.substr(begin, text.find_last_not_of(white_space) + 1 - begin);
}

} // namespace velmolint

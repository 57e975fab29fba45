#include "output_text.h"

#include "utf8.h"

#include <unicode/uchar.h>
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

std::string hexadecimal(std::uint32_t value, std::size_t digits)
{
    std::string result;
    for (; digits != 0; --digits)
        result += "0123456789ABCDEF"[value >> 4U * (digits - 1) & 0xFU];
    return result;
}

/// Returns whether the character has an effect instead of a shape: controls, marks of direction,
/// separators of lines, characters that Unicode does not define.
bool is_invisible(UChar32 character)
{
    return (U_GET_GC_MASK(character) & (U_GC_C_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK)) != 0;
}

std::string escaped(UChar32 character)
{
    const auto value = static_cast<std::uint32_t>(character);
    if (value < 0x80)
        return "\\x" + hexadecimal(value, 2);
    return value > 0xFFFF ? "\\U" + hexadecimal(value, 8) : "\\u" + hexadecimal(value, 4);
}

/// Returns the largest size up to `most` that splits no character.
std::size_t whole_characters(const std::string& text, std::size_t most)
{
    while (most != 0 && U8_IS_TRAIL(static_cast<std::uint8_t>(text[most])))
        --most;
    return most;
}

} // namespace

std::string escape_controls(const std::string& text)
{
    std::string result;
    std::size_t next = 0;
    while (next != text.size()) {
        const std::size_t begin = next;
        const UChar32 character = next_character(text, next);
        if (character < 0) {
            for (std::size_t i = begin; i != next; ++i)
                result += "\\x" + hexadecimal(static_cast<std::uint8_t>(text[i]), 2);
        } else if (is_invisible(character)) {
            result += escaped(character);
        } else {
            result.append(text, begin, next - begin);
        }
    }
    return result;
}

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

#include "common/escape_controls.h"

#include "common/utf8.h"

#include <unicode/uchar.h>

#include <cstddef>
#include <cstdint>

namespace app_common
{
namespace
{

std::string hexadecimal(std::uint32_t value, std::size_t digits)
{
    std::string result;
    for (; digits != 0; --digits)
        result += "0123456789ABCDEF"[value >> 4U * (digits - 1) & 0xFU];
    return result;
}

std::string escaped(UChar32 character)
{
    const auto value = static_cast<std::uint32_t>(character);
    if (value < 0x80)
        return "\\x" + hexadecimal(value, 2);
    return value > 0xFFFF ? "\\U" + hexadecimal(value, 8) : "\\u" + hexadecimal(value, 4);
}

bool is_plain(char byte)
{
    return byte >= ' ' && byte <= '~';
}

/// Appends the character at `next`, which is not plain, and advances `next` after it.
void append_character(std::string& result, std::string_view text, std::size_t& next)
{
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

} // namespace

bool is_invisible(UChar32 character)
{
    return (U_GET_GC_MASK(character) & (U_GC_C_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK)) != 0 ||
           u_hasBinaryProperty(character, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) != 0;
}

std::string escape_controls(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    std::size_t next = 0;
    while (next != text.size()) {
        const std::size_t begin = next;
        while (next != text.size() && is_plain(text[next]))
            ++next;
        result.append(text, begin, next - begin);
        if (next != text.size())
            append_character(result, text, next);
    }
    return result;
}

} // namespace app_common

#include "unicode_text.h"

#include <unicode/utf16.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>

namespace ROVA_2_18
{
namespace strings
{

namespace
{

constexpr std::size_t max_length = 1U << 28;
constexpr char16_t replacement = 0xFFFD;

bool is_unit(wchar_t element)
{
    return static_cast<std::uint32_t>(element) <= 0xFFFF;
}

bool is_supplementary(wchar_t element)
{
    return U_IS_SUPPLEMENTARY(static_cast<std::uint32_t>(element));
}

std::int32_t count_units(const std::wstring& text)
{
    const auto pairs = std::count_if(text.begin(), text.end(), is_supplementary);
    return static_cast<std::int32_t>(text.size()) + static_cast<std::int32_t>(pairs);
}

void write_units(const std::wstring& text, char16_t* units)
{
    for (const wchar_t element : text) {
        if (is_unit(element)) {
            *units++ = static_cast<char16_t>(element);
        } else if (is_supplementary(element)) {
            *units++ = U16_LEAD(element);
            *units++ = U16_TRAIL(element);
        } else {
            *units++ = replacement;
        }
    }
}

} // namespace

bool fits_unicode(const std::wstring& text)
{
    return text.size() <= max_length;
}

icu::UnicodeString to_unicode(const std::wstring& text)
{
    const std::int32_t length = count_units(text);
    icu::UnicodeString result;
    char16_t* const units = result.getBuffer(length);
    if (units == nullptr)
        throw std::bad_alloc();
    write_units(text, units);
    result.releaseBuffer(length);
    return result;
}

std::wstring from_unicode(const icu::UnicodeString& text)
{
    if (text.isBogus())
        throw std::bad_alloc();
    const char16_t* const units = text.getBuffer();
    return std::wstring(units, units + text.length());
}

} // namespace strings
} // namespace ROVA_2_18

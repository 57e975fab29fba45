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

/// Answers whether each element was a unit of its own; only then is that all of the text.
bool copy_units(const std::wstring& text, char16_t* units)
{
    std::uint32_t bits = 0;
    for (const wchar_t element : text) {
        *units++ = static_cast<char16_t>(element);
        bits |= static_cast<std::uint32_t>(element);
    }
    return bits <= 0xFFFF;
}

std::int32_t count_units(const std::wstring& text)
{
    const auto pairs = std::count_if(text.begin(), text.end(), is_supplementary);
    return static_cast<std::int32_t>(text.size()) + static_cast<std::int32_t>(pairs);
}

bool write_units(const std::wstring& text, char16_t* units)
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
    return true;
}

/// Has the buffer of a text filled, and answers what the filling answers.
template <typename Fill>
bool fill(icu::UnicodeString& text, std::int32_t length, const Fill& fill_units)
{
    char16_t* const units = text.getBuffer(length);
    if (units == nullptr)
        throw std::bad_alloc();
    const bool answer = fill_units(units);
    text.releaseBuffer(length);
    return answer;
}

} // namespace

bool fits_unicode(const std::wstring& text)
{
    return text.size() <= max_length;
}

icu::UnicodeString to_unicode(const std::wstring& text)
{
    icu::UnicodeString result;
    const auto size = static_cast<std::int32_t>(text.size());
    const bool is_done = fill(result, size, [&](auto* units) { return copy_units(text, units); });
    if (!is_done)
        fill(result, count_units(text), [&](auto* units) { return write_units(text, units); });
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

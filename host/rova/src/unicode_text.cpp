#include "unicode_text.h"

#include <unicode/utf16.h>

#include <algorithm>
#include <array>
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

constexpr std::size_t block_size = 8;

/// Copies the elements and returns the bitwise OR of all. Copies each block to a local array first,
/// which lets the compiler vectorize the loops.
template <typename From, typename To>
std::uint32_t copy(const From* from, std::size_t size, To* to)
{
    std::uint32_t bits = 0;
    for (; size >= block_size; size -= block_size, from += block_size, to += block_size) {
        std::array<From, block_size> block = {};
        std::copy_n(from, block_size, block.begin());
        for (std::size_t i = 0; i != block_size; ++i)
            bits |= static_cast<std::uint32_t>(block[i]);
        for (std::size_t i = 0; i != block_size; ++i)
            to[i] = static_cast<To>(block[i]);
    }
    for (std::size_t i = 0; i != size; ++i) {
        bits |= static_cast<std::uint32_t>(from[i]);
        to[i] = static_cast<To>(from[i]);
    }
    return bits;
}

/// Returns whether each element is one code unit. Only then is the copy the whole text.
bool copy_units(const std::wstring& text, char16_t* units)
{
    return copy(text.data(), text.size(), units) <= 0xFFFF;
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

/// Fills the buffer of a text. Returns the result of the callback.
template <typename Fill>
bool fill(icu::UnicodeString& text, std::int32_t length, const Fill& fill_units)
{
    char16_t* const units = text.getBuffer(length);
    if (units == nullptr)
        throw std::bad_alloc();
    const bool is_filled = fill_units(units);
    text.releaseBuffer(length);
    return is_filled;
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
    std::wstring result(static_cast<std::size_t>(text.length()), L'\0');
    copy(text.getBuffer(), result.size(), result.data());
    return result;
}

} // namespace strings
} // namespace ROVA_2_18

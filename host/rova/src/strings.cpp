#include <rova/strings.h>

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ROVA_2_18
{
namespace strings
{

namespace
{

constexpr UChar32 replacement = 0xFFFD;

bool is_ascii(UChar32 element)
{
    return static_cast<std::uint32_t>(element) <= 0x7F;
}

bool is_character(UChar32 element)
{
    return static_cast<std::uint32_t>(element) <= UCHAR_MAX_VALUE && !U_IS_SURROGATE(element);
}

/// Reads one character, or one element that is not a character, and advances the position. Does not
/// use U16_NEXT: after a lead surrogate it reads only 16 bits, so 0x1DC00 would form a pair.
UChar32 next_element(const std::wstring& text, std::size_t& position)
{
    const UChar32 element = text[position++];
    if (U_IS_LEAD(element) && position != text.size() && U_IS_TRAIL(text[position])) {
        return U16_GET_SUPPLEMENTARY(element, text[position++]);
    }
    return element;
}

/// Converts one character at a time, so that no text exceeds ICU's 32-bit lengths. The result is
/// the same: upper case in the root locale does not depend on adjacent characters.
void append_upper(std::wstring& result, UChar32 character)
{
    if (is_ascii(character)) {
        result.push_back(static_cast<wchar_t>(u_toupper(character)));
        return;
    }
    const auto upper = icu::UnicodeString(character).toUpper(icu::Locale::getRoot());
    for (std::int32_t i = 0; i != upper.length(); ++i) {
        result.push_back(upper[i]);
    }
}

constexpr std::size_t block_size = 8;

bool is_ascii_block(const std::uint8_t* block)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, block, block_size);
    return (bits & 0x8080808080808080U) == 0;
}

bool is_ascii_block(const wchar_t* block)
{
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i != block_size; ++i)
        bits |= static_cast<std::uint32_t>(block[i]);
    return bits <= 0x7F;
}

/// Copies the leading blocks that are all ASCII. Returns the number of characters copied. Most text
/// is ASCII, and a block takes little more time than a character.
template <typename From, typename To>
std::size_t copy_ascii(const From* from, std::size_t size, To* to)
{
    std::size_t done = 0;
    for (; size - done >= block_size && is_ascii_block(from + done); done += block_size)
        for (std::size_t i = done; i != done + block_size; ++i)
            to[i] = static_cast<To>(from[i]);
    return done;
}

} // namespace

std::string utf16_to_utf8(const std::wstring& text)
{
    std::string result(text.size(), '\0');
    std::size_t read = copy_ascii(text.data(), text.size(), result.data());
    for (; read != text.size() && is_ascii(text[read]); ++read) {
        result[read] = static_cast<char>(text[read]);
    }
    // An ASCII text is complete here, at its exact length. Any other text is resized for the worst
    // case.
    std::size_t written = read;
    result.resize(written + (text.size() - read) * U8_MAX_LENGTH);
    while (read != text.size()) {
        const UChar32 element = next_element(text, read);
        U8_APPEND_UNSAFE(result, written, is_character(element) ? element : replacement);
    }
    result.resize(written);
    return result;
}

std::wstring utf8_to_utf16(const std::string& text)
{
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    // No character has fewer bytes than elements, so the text's length is sufficient.
    std::wstring result(text.size(), L'\0');
    std::size_t written = copy_ascii(bytes, text.size(), result.data());
    for (std::size_t read = written; read != text.size();) {
        UChar32 character = 0;
        U8_NEXT_OR_FFFD(bytes, read, text.size(), character);
        U16_APPEND_UNSAFE(result, written, character);
    }
    result.resize(written);
    return result;
}

std::wstring to_upper(const std::wstring& text)
{
    std::wstring result;
    result.reserve(text.size());
    for (std::size_t position = 0; position != text.size();) {
        const UChar32 element = next_element(text, position);
        if (is_character(element)) {
            append_upper(result, element);
        } else {
            result.push_back(static_cast<wchar_t>(element));
        }
    }
    return result;
}

} // namespace strings
} // namespace ROVA_2_18

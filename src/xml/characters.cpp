#include "xml/characters.h"

#include <rova/strings.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace velmoext_1_4_8
{
namespace
{

struct range_t
{
    std::uint32_t first;
    std::uint32_t last;
};

constexpr range_t name_start_characters[] = {
    {'a', 'z'},       {'A', 'Z'},       {'_', '_'},       {':', ':'},
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};

constexpr range_t further_name_characters[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t Count>
constexpr bool contains(const range_t (&ranges)[Count], std::uint32_t character)
{
    // NOLINTNEXTLINE(readability-use-anyofallof): that is not a constant expression yet
    for (const range_t& range : ranges)
        if (range.first <= character && character <= range.last)
            return true;
    return false;
}

constexpr bool begins_name(std::uint32_t character)
{
    return contains(name_start_characters, character);
}

constexpr bool continues_name(std::uint32_t character)
{
    return begins_name(character) || contains(further_name_characters, character);
}

constexpr auto ascii_name_characters = [] {
    std::array<bool, 256> characters = {};
    for (std::uint32_t character = 0; character != 128; ++character)
        characters.at(character) = continues_name(character);
    return characters;
}();

bool is_lead(std::uint32_t unit)
{
    return 0xD800 <= unit && unit <= 0xDBFF;
}

bool is_trail(std::uint32_t unit)
{
    return 0xDC00 <= unit && unit <= 0xDFFF;
}

// Returns the character at the position, which moves past it. A surrogate without its partner is
// returned as it is: no name has one.
std::uint32_t next_character(const std::wstring& text, std::size_t& position)
{
    const auto unit = static_cast<std::uint32_t>(text[position++]);
    if (!is_lead(unit) || position == text.size())
        return unit;
    const auto trail = static_cast<std::uint32_t>(text[position]);
    if (!is_trail(trail))
        return unit;
    ++position;
    return 0x10000 + ((unit - 0xD800) << 10U) + (trail - 0xDC00);
}

bool is_unwritable(wchar_t unit)
{
    const bool is_control = unit < 0x20 && unit != '\t' && unit != '\n' && unit != '\r';
    return is_control || unit == 0xFFFE || unit == 0xFFFF;
}

} // namespace

bool is_xml_character(std::uint32_t character)
{
    static constexpr range_t characters[] = {
        {'\t', '\n'}, {'\r', '\r'}, {0x20, 0xD7FF}, {0xE000, 0xFFFD}, {0x10000, 0x10FFFF}};
    return contains(characters, character);
}

bool is_xml_name(const std::wstring& text)
{
    if (text.empty())
        return false;
    std::size_t position = 0;
    if (!begins_name(next_character(text, position)))
        return false;
    while (position < text.size())
        if (!continues_name(next_character(text, position)))
            return false;
    return true;
}

bool is_ascii_name(std::string_view text)
{
    return !text.empty() && begins_name(static_cast<unsigned char>(text.front())) &&
           std::all_of(text.begin(), text.end(), [](char character) {
               return ascii_name_characters[static_cast<unsigned char>(character)];
           });
}

std::string xml_utf8(const std::wstring& text)
{
    std::wstring writable = text;
    std::replace_if(writable.begin(), writable.end(), is_unwritable, L'\xFFFD');
    return ROVA_2_18::strings::utf16_to_utf8(writable);
}

} // namespace velmoext_1_4_8

#include "xml/xml_text.h"

#include <rova/strings.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <numeric>

namespace velmoext_1_4_8
{
namespace
{

struct range_t
{
    std::uint32_t first;
    std::uint32_t last;
};

const range_t name_start_characters[] = {
    {'a', 'z'},       {'A', 'Z'},       {'_', '_'},       {':', ':'},
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};

const range_t further_name_characters[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t Count>
bool contains(const range_t (&ranges)[Count], std::uint32_t character)
{
    return std::any_of(std::begin(ranges), std::end(ranges), [&](const range_t& range) {
        return range.first <= character && character <= range.last;
    });
}

bool is_lead(std::uint32_t unit)
{
    return 0xD800 <= unit && unit <= 0xDBFF;
}

bool is_trail(std::uint32_t unit)
{
    return 0xDC00 <= unit && unit <= 0xDFFF;
}

// The character at the position, which moves behind it. A surrogate without its partner is answered
// as it is: no name holds one.
std::uint32_t next_character(const std::wstring& text, std::size_t& position)
{
    const auto unit = static_cast<std::uint32_t>(text[position++]);
    if (!is_lead(unit) || position == text.size())
        return unit;
    const auto trail = static_cast<std::uint32_t>(text[position]);
    if (!is_trail(trail))
        return unit;
    ++position;
    return 0x10000 + ((unit - 0xD800) << 10) + (trail - 0xDC00);
}

bool is_unwritable(wchar_t unit)
{
    const bool is_control = unit < 0x20 && unit != '\t' && unit != '\n' && unit != '\r';
    return is_control || unit == 0xFFFE || unit == 0xFFFF;
}

constexpr auto plain_units = [] {
    std::array<bool, 128> plain = {};
    for (std::size_t unit = ' '; unit <= '~'; ++unit)
        plain.at(unit) = unit != '"' && unit != '&' && unit != '<' && unit != '>';
    return plain;
}();

bool is_plain_unit(wchar_t unit)
{
    const auto index = static_cast<std::uint32_t>(unit);
    return index < plain_units.size() && plain_units[index]; // NOLINT(*-constant-array-index)
}

// Most texts are plain, so they are converted while that is found out.
bool convert_plain(const std::wstring& text, char* utf8)
{
    const wchar_t* unit = text.data();
    const wchar_t* const end = unit + text.size();
    while (unit != end && is_plain_unit(*unit))
        *utf8++ = static_cast<char>(*unit++);
    return unit == end;
}

std::string writable_utf8(const std::wstring& text)
{
    std::wstring writable = text;
    std::replace_if(writable.begin(), writable.end(), is_unwritable, L'\xFFFD');
    return ROVA_2_18::strings::utf16_to_utf8(writable);
}

std::size_t escaped_size(char character)
{
    switch (character) {
    case '"':
        return sizeof("&quot;") - 1;
    case '&':
        return sizeof("&amp;") - 1;
    case '<':
    case '>':
        return sizeof("&lt;") - 1;
    case '\n':
    case '\r':
        return sizeof("&#10;") - 1;
    case '\t':
        return sizeof("&#9;") - 1;
    default:
        return 1;
    }
}

} // namespace

void xml_text_t::assign(const std::wstring& text)
{
    m_utf8.resize(text.size());
    m_is_plain = convert_plain(text, m_utf8.data());
    if (!m_is_plain)
        m_utf8 = writable_utf8(text);
}

bool is_xml_name(const std::wstring& text)
{
    if (text.empty())
        return false;
    std::size_t position = 0;
    if (!contains(name_start_characters, next_character(text, position)))
        return false;
    while (position < text.size()) {
        const std::uint32_t character = next_character(text, position);
        if (!contains(name_start_characters, character) &&
            !contains(further_name_characters, character))
            return false;
    }
    return true;
}

std::size_t size_as_xml_attribute(const xml_text_t& value)
{
    if (value.is_plain())
        return value.utf8().size();
    return std::accumulate(value.utf8().begin(), value.utf8().end(), std::size_t(0),
                           [](std::size_t size, char c) { return size + escaped_size(c); });
}

} // namespace velmoext_1_4_8

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace velmoext_1_4_8
{

/// Returns whether the byte is white space in XML.
constexpr bool is_blank(char byte)
{
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

/// Returns how many white space characters the text begins with.
inline std::size_t count_blanks(std::string_view text)
{
    std::size_t count = 0;
    while (count != text.size() && is_blank(text[count]))
        ++count;
    return count;
}

/// Returns whether the text has no character but white space.
inline bool is_blank_text(std::string_view text)
{
    return count_blanks(text) == text.size();
}

/// The bytes that cannot be part of a name because they separate one from what follows.
constexpr auto name_ends = [] {
    std::array<bool, 256> ends = {};
    for (const char byte : {' ', '\t', '\r', '\n', '=', '/', '>', '<', '"', '\'', '?'})
        ends.at(static_cast<unsigned char>(byte)) = true;
    return ends;
}();

constexpr bool ends_name(char byte)
{
    return name_ends[static_cast<unsigned char>(byte)]; // NOLINT(*-constant-array-index)
}

/// ASCII without markup and control characters, which is written as it is.
constexpr auto plain_units = [] {
    std::array<bool, 128> plain = {};
    for (std::size_t unit = ' '; unit != plain.size(); ++unit)
        plain.at(unit) = unit != '"' && unit != '&' && unit != '<' && unit != '>';
    return plain;
}();

/// Returns whether the byte or wide character is plain, see plain_units.
template <typename Char>
constexpr bool is_plain(Char unit)
{
    const auto index = static_cast<std::make_unsigned_t<Char>>(unit);
    return index < plain_units.size() && plain_units[index]; // NOLINT(*-constant-array-index)
}

/// Returns whether the character can be written in an XML 1.0 document.
bool is_xml_character(std::uint32_t character);

/// Returns whether the text is a name of XML 1.0, fifth edition, of any length.
bool is_xml_name(const std::wstring& text);

/// Returns whether the text is a name of ASCII characters alone.
bool is_ascii_name(std::string_view text);

/// Returns the text in UTF-8, with U+FFFD for each character that XML 1.0 cannot carry.
std::string xml_utf8(const std::wstring& text);

} // namespace velmoext_1_4_8

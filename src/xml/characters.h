#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace velmoext_1_4_8
{

/// Whether the byte is white space in XML.
constexpr bool is_blank(char byte)
{
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

/// Whether the byte cannot be part of a name because it separates one from what follows.
constexpr bool ends_name(char byte)
{
    return is_blank(byte) || byte == '=' || byte == '/' || byte == '>' || byte == '<' ||
           byte == '"' || byte == '\'' || byte == '?';
}

/// Whether the character can be written in an XML 1.0 document.
bool is_xml_character(std::uint32_t character);

/// Whether the text is a name of XML 1.0, fifth edition, of any length.
bool is_xml_name(const std::wstring& text);

/// Whether the text is a name of ASCII characters alone.
bool is_ascii_name(std::string_view text);

/// Returns the text in UTF-8, with U+FFFD for each character that XML 1.0 cannot carry.
std::string xml_utf8(const std::wstring& text);

} // namespace velmoext_1_4_8

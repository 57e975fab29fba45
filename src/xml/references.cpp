#include "xml/references.h"

#include "xml/byte_blocks.h"
#include "xml/characters.h"
#include "xml/utf8.h"

#include <rova/strings.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>

namespace velmoext_1_4_8
{
namespace
{

// libxml2 2.9.14 refuses some letters among the digits of a longer one.
const std::size_t max_reference_bytes = 15;

enum contents_t : std::uint8_t
{
    plain = 0,
    line_ends_or_tabs = 1,
    brackets = 2, ///< three characters that end a section of character data could be among them
    references = 4,
    non_ascii = 8,
    unreadable = 16
};

constexpr auto contents_of_byte = [] {
    std::array<std::uint8_t, 256> contents = {};
    for (std::size_t byte = 0; byte != contents.size(); ++byte)
        contents.at(byte) = byte < ' ' ? unreadable : byte < 0x80 ? plain : non_ascii;
    contents['\t'] = line_ends_or_tabs;
    contents['\n'] = line_ends_or_tabs;
    contents[']'] = brackets;
    contents['&'] = references;
    contents['<'] = unreadable;
    return contents;
}();

// Most texts have plain characters alone, which is found out eight bytes at a time.
bool has_plain_characters_only(std::string_view text)
{
    return has_no_high_bits(text, [](byte_block_t block) {
        return find_less(block, ' ') | find_equal(block, '&') | find_equal(block, '<') |
               find_equal(block, ']');
    });
}

unsigned find_contents(std::string_view text)
{
    unsigned contents = plain;
    if (has_plain_characters_only(text))
        return contents;
    for (const char byte : text)
        contents |= contents_of_byte[static_cast<unsigned char>(byte)];
    if ((contents & brackets) != 0 && text.find("]]>") != std::string_view::npos)
        contents |= unreadable;
    return contents;
}

// Unlike the conversion, refuses malformed UTF-8.
bool decode_utf8(std::string_view utf8, std::wstring& wide)
{
    wide = utf8_to_wide(utf8);
    return is_ascii(utf8) || ROVA_2_18::strings::utf16_to_utf8(wide) == utf8;
}

bool has_non_characters(const std::wstring& wide)
{
    return std::any_of(wide.begin(), wide.end(),
                       [](wchar_t unit) { return unit == 0xFFFE || unit == 0xFFFF; });
}

// The number of a reference without "&#" and ";", 0 if it is not one of a character.
std::uint32_t character_of(std::string_view number)
{
    const bool is_hexadecimal = !number.empty() && number.front() == 'x';
    if (is_hexadecimal)
        number.remove_prefix(1);
    std::uint32_t character = 0;
    const char* const end = number.data() + number.size();
    const auto result = std::from_chars(number.data(), end, character, is_hexadecimal ? 16 : 10);
    const bool is_number = result.ec == std::errc() && result.ptr == end;
    return is_number && is_xml_character(character) ? character : 0;
}

// Takes the name or number of a reference. Returns an empty text if it is unknown.
std::string text_of_reference(std::string_view name, std::string_view ampersand)
{
    if (!name.empty() && name.front() == '#') {
        const std::uint32_t character = character_of(name.substr(1));
        if (character == '&')
            return std::string(ampersand);
        return character == 0 ? std::string()
                              : ROVA_2_18::strings::utf16_to_utf8(
                                    std::wstring(1, static_cast<wchar_t>(character)));
    }
    if (name == "amp")
        return std::string(ampersand);
    return name == "lt"     ? "<"
           : name == "gt"   ? ">"
           : name == "quot" ? "\""
           : name == "apos" ? "'"
                            : "";
}

// Appends the resolved text, up to the first unknown reference, whose offset is returned; the size
// of the text when there is none.
std::size_t resolve(std::string_view text, std::string_view ampersand, std::string& resolved)
{
    std::size_t at = 0;
    while (true) {
        const std::size_t begin = std::min(text.find('&', at), text.size());
        resolved.append(text.substr(at, begin - at));
        const std::size_t end = text.substr(begin, max_reference_bytes).find(';');
        if (begin == text.size() || end == std::string_view::npos)
            return begin;
        const std::string character = text_of_reference(text.substr(begin + 1, end - 1), ampersand);
        if (character.empty())
            return begin;
        resolved.append(character);
        at = begin + end + 1;
    }
}

bool begins_with_long_reference(std::string_view text)
{
    const std::string_view beginning = text.substr(0, max_reference_bytes);
    return beginning.size() == max_reference_bytes && beginning.substr(0, 2) == "&#" &&
           beginning.find_first_not_of("x0123456789ABCDEFabcdef", 2) == std::string_view::npos;
}

} // namespace

bool is_plain_text(std::string_view text)
{
    return (find_contents(text) & ~unsigned(line_ends_or_tabs | brackets)) == 0;
}

std::size_t find_fault(std::string_view text)
{
    const unsigned contents = find_contents(text);
    if ((contents & (unreadable | references)) == 0)
        return text.size();
    std::string resolved;
    std::size_t reference = resolve(text, "&", resolved);
    if (begins_with_long_reference(text.substr(reference)))
        reference = text.size();
    const auto* const unreadable_byte = std::find_if(text.begin(), text.end(), [](char byte) {
        return contents_of_byte[static_cast<unsigned char>(byte)] == unreadable && byte != '\r';
    });
    return std::min(
        {reference, static_cast<std::size_t>(unreadable_byte - text.begin()), text.find("]]>")});
}

bool decode_references(std::string_view text, text_context_t context, std::string_view ampersand,
                       std::wstring& wide)
{
    const unsigned contents = find_contents(text);
    const unsigned refused =
        context == text_context_t::attribute ? unreadable | line_ends_or_tabs : unreadable;
    if ((contents & refused) != 0)
        return false;
    if ((contents & (references | non_ascii)) == 0) {
        wide = ascii_to_wide(text);
        return true;
    }
    if ((contents & non_ascii) != 0 && (!decode_utf8(text, wide) || has_non_characters(wide)))
        return false;
    if ((contents & references) == 0)
        return true;
    std::string resolved;
    resolved.reserve(text.size());
    if (resolve(text, ampersand, resolved) != text.size())
        return false;
    wide = utf8_to_wide(resolved);
    return true;
}

bool decode_name(std::string_view name, std::wstring& wide)
{
    if (is_ascii_name(name)) {
        wide = ascii_to_wide(name);
        return true;
    }
    return !is_ascii(name) && decode_utf8(name, wide) && is_xml_name(wide);
}

} // namespace velmoext_1_4_8

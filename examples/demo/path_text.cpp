#include "path_text.h"

#include "escape.h"
#include "library_names.h"

#include <rova/strings.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace audit
{
namespace
{

/// The bytes of one character, and its UTF-16 form, which is empty if it is not readable.
struct character_t
{
    std::string_view bytes;
    std::wstring text;
};

std::size_t sequence_length(char lead)
{
    const auto value = static_cast<unsigned char>(lead);
    if (value < 0xC2)
        return 1;
    if (value < 0xE0)
        return 2;
    return value < 0xF0 ? 3 : 4;
}

bool is_readable(const std::wstring& character)
{
    const wchar_t first = character.front();
    const bool is_control = first < 0x20 || (first >= 0x7F && first < 0xA0);
    return !is_control && first != 0xFFFE && first != 0xFFFF;
}

// A character is UTF-8 only if a conversion to UTF-16 and back leaves it unchanged.
character_t next_character(std::string_view rest)
{
    const std::string bytes(rest.substr(0, sequence_length(rest.front())));
    std::wstring text = rova::strings::utf8_to_utf16(bytes);
    if (rova::strings::utf16_to_utf8(text) != bytes)
        return {rest.substr(0, 1), std::wstring()};
    if (!is_readable(text))
        text.clear();
    return {rest.substr(0, bytes.size()), text};
}

void append(std::wstring& text, const character_t& character)
{
    if (character.text.empty())
        text += rova::strings::utf8_to_utf16(escape(character.bytes));
    else if (character.text == L"\\")
        text += L"\\\\";
    else
        text += character.text;
}

bool is_plain(char byte)
{
    return byte >= ' ' && byte <= '~' && byte != '\\';
}

} // namespace

std::wstring path_text(const std::string& path)
{
    std::wstring text;
    std::string_view rest = path;
    while (!rest.empty()) {
        const auto* const plain_end = std::find_if_not(rest.begin(), rest.end(), is_plain);
        text.append(rest.begin(), plain_end);
        rest.remove_prefix(static_cast<std::size_t>(plain_end - rest.begin()));
        if (rest.empty())
            break;
        const character_t character = next_character(rest);
        append(text, character);
        rest.remove_prefix(character.bytes.size());
    }
    return text;
}

bool is_printable(const std::string& name)
{
    std::string_view rest = name;
    if (std::all_of(rest.begin(), rest.end(), is_plain))
        return true;
    while (!rest.empty()) {
        const character_t character = next_character(rest);
        if (character.text.empty())
            return false;
        rest.remove_prefix(character.bytes.size());
    }
    return true;
}

} // namespace audit

#include "json_text.h"

#include "common/escape_controls.h"
#include "common/utf8.h"

#include <rova/strings.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velmolog
{
namespace
{

using velmoext_1_4_8::message_t;

const std::array<const char*, 5> severity_names = {"none", "info", "warning", "error", "critical"};

void append_escape(std::string& text, std::uint32_t unit)
{
    text += "\\u";
    for (unsigned shift = 16; shift != 0; shift -= 4)
        text += "0123456789abcdef"[unit >> (shift - 4) & 0xFU];
}

/// Appends the character as JSON escapes it, in UTF-16.
void append_escaped(std::string& text, UChar32 character)
{
    const auto value = static_cast<std::uint32_t>(character);
    if (value > 0xFFFF) {
        append_escape(text, 0xD7C0 + (value >> 10U));
        append_escape(text, 0xDC00 + (value & 0x3FFU));
    } else {
        append_escape(text, value);
    }
}

bool is_plain(char byte)
{
    return (byte >= ' ' && byte <= '~') || byte == '\n';
}

} // namespace

// The serializer escapes the controls below the blank only. All other characters beyond the plain
// ones are in strings.
std::string text_of(const json_t& value, int indentation)
{
    const std::string json = value.dump(indentation, ' ', false, json_t::error_handler_t::replace);
    std::string result;
    result.reserve(json.size());
    std::size_t next = 0;
    while (next != json.size()) {
        const std::size_t begin = next;
        while (next != json.size() && is_plain(json[next]))
            ++next;
        result.append(json, begin, next - begin);
        if (next == json.size())
            break;
        const std::size_t character_begin = next;
        const UChar32 character = app_common::next_character(json, next);
        if (app_common::is_invisible(character))
            append_escaped(result, character);
        else
            result.append(json, character_begin, next - character_begin);
    }
    return result;
}

// The object's own operations compare with all names before.
json_t object_of(const std::map<std::wstring, std::wstring>& texts)
{
    json_t::object_t object;
    object.reserve(texts.size());
    for (const auto& [name, text] : texts)
        object.emplace_back(ROVA_2_18::strings::utf16_to_utf8(name),
                            ROVA_2_18::strings::utf16_to_utf8(text));
    return object;
}

std::string name_of(message_t::severity_t severity)
{
    const auto number = static_cast<std::size_t>(severity);
    return severity_names.at(number < severity_names.size() ? number : 0);
}

} // namespace velmolog

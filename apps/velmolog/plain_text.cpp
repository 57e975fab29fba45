#include "texts.h"

#include <rova/strings.h>

namespace velmolog
{
namespace
{

using ROVA_2_18::strings::utf16_to_utf8;

/// Returns the text, in quotation marks if a reader could not see otherwise where it ends.
std::string quoted_if_needed(const std::string& text)
{
    if (!text.empty() && text.find_first_of(" \t\r\n\"") == std::string::npos)
        return text;
    std::string result = "\"";
    for (const char byte : text) {
        if (byte == '"' || byte == '\\')
            result += '\\';
        result += byte;
    }
    return result + "\"";
}

} // namespace

std::string plain_text(const velmoext_1_4_8::message_t& message)
{
    const std::wstring type = message.get_type();
    std::string text = type.empty() ? "message" : quoted_if_needed(utf16_to_utf8(type));
    for (const auto& [name, value] : message.get_content().args)
        text.append(" ")
            .append(quoted_if_needed(utf16_to_utf8(name)))
            .append("=")
            .append(quoted_if_needed(utf16_to_utf8(value)));
    return text;
}

} // namespace velmolog

#pragma once

#include "support.h"

#include <cstdio>
#include <string>

namespace velmoext_1_4_8
{

/// Returns one element of a wide string in a form that a line of text shows without ambiguity.
inline std::string escaped(wchar_t unit)
{
    switch (unit) {
    case L'\n':
        return "\\n";
    case L'\r':
        return "\\r";
    case L'\t':
        return "\\t";
    case L'"':
        return "\\\"";
    case L'\\':
        return "\\\\";
    default:
        break;
    }
    if (L' ' <= unit && unit <= L'~')
        return std::string(1, static_cast<char>(unit));
    char text[16] = "";
    std::snprintf(text, sizeof(text), "\\u%04X", static_cast<unsigned>(unit));
    return text;
}

inline std::string quoted(const std::wstring& text)
{
    std::string result = "\"";
    for (const wchar_t unit : text)
        result += escaped(unit);
    return result + "\"";
}

inline std::string severity_name(message_t::severity_t severity)
{
    static const char* const names[] = {"none", "info", "warning", "error", "critical"};
    return message_t::none <= severity && severity <= message_t::critical
               ? names[severity]
               : std::to_string(static_cast<int>(severity));
}

/// Returns the parts of a message, each as a line that begins with `before` and ends with `after`.
inline std::string message_text(const message_t& message, const std::string& before,
                                const std::string& after)
{
    const message_t::message_content_t content = message.get_content();
    std::string result = before + "type " + quoted(message.get_type()) + after + before +
                         "severity " + severity_name(message.get_severity()) + after;
    const auto add = [&](const char* kind, const string_map_t& texts) {
        for (const auto& text : texts)
            result.append(before)
                .append(kind)
                .append(quoted(text.first))
                .append(" = ")
                .append(quoted(text.second))
                .append(after);
    };
    add("attribute ", content.attributes);
    add("arg ", content.args);
    add("element ", content.elements);
    return result;
}

} // namespace velmoext_1_4_8

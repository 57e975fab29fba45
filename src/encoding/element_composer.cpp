#include "encoding/element_composer.h"

#include "core/message_access.h"
#include "encoding/element_names.h"
#include "encoding/severity_text.h"
#include "xml/characters.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <string_view>

namespace velmoext_1_4_8
{
namespace
{

typedef std::map<std::wstring, std::wstring> string_map_t;

// A message of usual size needs no second allocation.
const std::size_t usual_size = 1024;

const std::string_view declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

// As libxml2's writer escapes them: in an attribute, white space too would not survive a reader.
std::string_view escape_in_text(char character)
{
    switch (character) {
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '&':
        return "&amp;";
    case '"':
        return "&quot;";
    case '\r':
        return "&#13;";
    default:
        return std::string_view();
    }
}

std::string_view escape_in_attribute(char character)
{
    switch (character) {
    case '\n':
        return "&#10;";
    case '\t':
        return "&#9;";
    default:
        return escape_in_text(character);
    }
}

constexpr auto plain_units = [] {
    std::array<bool, 128> plain = {};
    for (std::size_t unit = ' '; unit <= '~'; ++unit)
        plain.at(unit) = unit != '"' && unit != '&' && unit != '<' && unit != '>';
    return plain;
}();

// Printable ASCII without markup is written as it is.
bool is_plain(wchar_t unit)
{
    const auto index = static_cast<std::uint32_t>(unit);
    return index < plain_units.size() && plain_units[index]; // NOLINT(*-constant-array-index)
}

// libxml2 splits a name at its first two colons. If a name is between them, what follows the
// second one must begin a name too, or the document is malformed.
bool can_be_split(const std::wstring& name)
{
    const std::size_t first = name.find(L':');
    const std::size_t second = first == std::wstring::npos ? first : name.find(L':', first + 1);
    if (first == 0 || second == std::wstring::npos || second + 1 == name.size())
        return true;
    return is_xml_name(name.substr(second + 1)) ||
           !is_xml_name(name.substr(first + 1, second - first - 1));
}

bool is_writable_name(const std::wstring& key)
{
    return is_xml_name(key) && can_be_split(key);
}

class composer_t
{
public:
    composer_t(std::size_t depth, std::string& out) : m_out(out), m_indent(depth + 1, ' ') {}

    void compose(const message_t& message)
    {
        const message_t::message_content_t& content = message_access::content(message);
        append(outer_indent(), "<", element_names::msg);
        const bool is_complete = append_attributes(content.attributes);
        append(">\n");
        if (is_complete) {
            append_args(content.args);
            append_elements(content.elements);
        }
        append_element(element_names::type, message_access::type(message));
        const std::string_view severity = severity_text(message.get_severity());
        if (!severity.empty())
            append(m_indent, "<", element_names::severity, ">", severity, "</",
                   element_names::severity, ">\n");
        append(outer_indent(), "</", element_names::msg, ">\n");
    }

private:
    template <typename... Parts>
    void append(const Parts&... parts)
    {
        (m_out.append(parts), ...);
    }

    std::string_view outer_indent() const { return std::string_view(m_indent).substr(1); }

    // Returns false at an empty key, which ends the content.
    bool append_attributes(const string_map_t& attributes)
    {
        for (const auto& [key, value] : attributes) {
            if (key.empty())
                return false;
            if (is_writable_name(key) && is_first_of_name(key)) {
                append(" ");
                append_name(key);
                append("=\"");
                append_text(value, escape_in_attribute);
                append("\"");
            }
        }
        return true;
    }

    void append_args(const string_map_t& args)
    {
        for (const auto& [name, text] : args) {
            append(m_indent, "<", element_names::arg, " ", element_names::arg_name, "=\"");
            append_text(name, escape_in_attribute);
            append("\">");
            append_text(text, escape_in_text);
            append("</", element_names::arg, ">\n");
        }
    }

    void append_elements(const string_map_t& elements)
    {
        for (const auto& [key, text] : elements) {
            if (key.empty())
                return;
            if (is_writable_name(key))
                append_element(xml_utf8(key), text);
        }
    }

    void append_element(std::string_view name, const std::wstring& text)
    {
        append(m_indent, "<", name, ">");
        append_text(text, escape_in_text);
        append("</", name, ">\n");
    }

    void append_name(const std::wstring& name) { append_text(name, escape_in_text); }

    // Most texts are plain, and converted while that is found out.
    template <typename Escape>
    void append_text(const std::wstring& text, const Escape& escape)
    {
        const std::size_t start = m_out.size();
        m_out.resize(start + text.size());
        char* to = &m_out[start];
        const wchar_t* at = text.data();
        const wchar_t* const end = at + text.size();
        while (at != end && is_plain(*at))
            *to++ = static_cast<char>(*at++);
        if (at == end)
            return;
        m_out.resize(start);
        for (const char character : xml_utf8(text)) {
            const std::string_view escaped = escape(character);
            if (escaped.empty())
                m_out.push_back(character);
            else
                m_out.append(escaped);
        }
    }

    // A character beyond the BMP can be one element of a key or two, so that two keys can have the
    // same name.
    bool is_first_of_name(const std::wstring& key)
    {
        const bool is_ambiguous = std::any_of(key.begin(), key.end(), [](wchar_t unit) {
            return static_cast<std::uint32_t>(unit) >= 0xD800;
        });
        return !is_ambiguous || m_ambiguous_names.insert(xml_utf8(key)).second;
    }

    std::string& m_out;
    const std::string m_indent; ///< of the message's children
    std::set<std::string> m_ambiguous_names;
};

} // namespace

void append_message_element(const message_t& message, std::size_t depth, std::string& document)
{
    composer_t(depth, document).compose(message);
}

std::string compose_document(const message_t& message)
{
    std::string document;
    document.reserve(usual_size);
    document.append(declaration);
    append_message_element(message, 0, document);
    return document;
}

} // namespace velmoext_1_4_8

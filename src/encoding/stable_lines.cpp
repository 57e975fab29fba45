#include "encoding/stable_lines.h"

#include "encoding/element_names.h"
#include "encoding/severity_text.h"
#include "xml/characters.h"

#include <algorithm>

namespace velmoext_1_4_8
{
namespace
{

namespace names = element_names;

// Elements that are not additional texts of a message.
bool is_reserved(std::string_view name)
{
    return name == names::arg || name == names::severity || name == names::msg ||
           name == names::log;
}

// Passes over the lines of an element. All functions return false at anything else than they
// expect.
class line_scanner_t
{
public:
    explicit line_scanner_t(std::string_view text) : m_rest(text) {}

    std::string_view rest() const { return m_rest; }

    // Of the last message; the size is not set.
    const message_lines_t& lines() const { return m_lines; }

    bool skip_message()
    {
        m_lines = message_lines_t();
        return skip(" <", names::msg) && skip_attributes() && skip(">\n") && skip_args() &&
               skip_elements() && skip_type() && skip_severity() && skip(" </", names::msg, ">\n");
    }

private:
    template <typename... Texts>
    bool skip(const Texts&... expected)
    {
        std::string_view rest = m_rest;
        const auto skip_one = [&](std::string_view text) {
            const bool is_there = rest.substr(0, text.size()) == text;
            rest.remove_prefix(is_there ? text.size() : 0);
            return is_there;
        };
        const bool is_found = (skip_one(expected) && ...);
        if (is_found) {
            m_lines.count += m_rest[m_rest.size() - rest.size() - 1] == '\n' ? 1 : 0;
            m_rest = rest;
        }
        return is_found;
    }

    template <typename Ends>
    std::string_view take_until(const Ends& ends)
    {
        const auto* const end = std::find_if(m_rest.begin(), m_rest.end(), ends);
        const std::string_view text =
            m_rest.substr(0, static_cast<std::size_t>(end - m_rest.begin()));
        m_rest.remove_prefix(text.size());
        return text;
    }

    std::string_view take_plain_text()
    {
        return take_until([](char character) { return !is_plain(character); });
    }

    // A log does not carry an empty text.
    bool skip_text() { return !take_plain_text().empty(); }

    // Takes a name that a message has after the one before.
    bool take_next_name(std::string_view& name)
    {
        const std::string_view before = name;
        name = take_until(ends_name);
        return before < name && is_ascii_name(name) && name.find(':') == std::string_view::npos;
    }

    // To a "source", a reader adds a "tool". An "xmlns" is not read as an attribute from a
    // document.
    bool skip_attributes()
    {
        std::string_view name;
        while (skip(" ")) {
            if (!take_next_name(name) || name == "source" || name == "xmlns" || !skip("=\""))
                return false;
            const std::string_view value = take_plain_text();
            if (!skip("\""))
                return false;
            if (name == "tool")
                m_lines.tool = value;
        }
        return true;
    }

    bool skip_args()
    {
        std::string_view name;
        while (skip("  <", names::arg, " ", names::arg_name, "=\"")) {
            const std::string_view before = name;
            name = take_plain_text();
            if (name <= before || !skip("\">") || !skip_text() || !skip("</", names::arg, ">\n"))
                return false;
        }
        return true;
    }

    bool skip_elements()
    {
        std::string_view name;
        while (!is_at_type() && skip("  <"))
            if (!take_next_name(name) || is_reserved(name) || !skip(">") || !skip_text() ||
                !skip("</", name, ">\n"))
                return false;
        return true;
    }

    bool is_at_type() const { return line_scanner_t(*this).skip("  <", names::type, ">"); }

    bool skip_type()
    {
        if (!skip("  <", names::type, ">"))
            return false;
        m_lines.type = take_plain_text();
        return !m_lines.type.empty() && skip("</", names::type, ">\n");
    }

    bool skip_severity()
    {
        if (!skip("  <", names::severity, ">"))
            return true;
        const std::string_view text = take_plain_text();
        m_lines.severity = parse_severity(text);
        return text == severity_text(m_lines.severity) && !text.empty() &&
               skip("</", names::severity, ">\n");
    }

    std::string_view m_rest;
    message_lines_t m_lines;
};

} // namespace

std::size_t measure_stable_lines(std::string_view text)
{
    line_scanner_t scanner(text);
    std::string_view rest = text;
    while (scanner.skip_message())
        rest = scanner.rest();
    return text.size() - rest.size();
}

message_lines_t find_stable_message(std::string_view text)
{
    line_scanner_t scanner(text);
    if (!scanner.skip_message())
        return message_lines_t();
    message_lines_t lines = scanner.lines();
    lines.size = text.size() - scanner.rest().size();
    return lines;
}

} // namespace velmoext_1_4_8

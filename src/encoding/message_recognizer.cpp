#include "encoding/message_recognizer.h"

#include "core/message_access.h"
#include "encoding/element_names.h"
#include "encoding/severity_text.h"
#include "encoding/text_events.h"
#include "xml/characters.h"
#include "xml/references.h"
#include "xml/scanner.h"
#include "xml/utf8.h"

#include <boost/make_shared.hpp>

#include <map>
#include <string>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

typedef scanner_t::token_t token_t;
typedef std::map<std::wstring, std::wstring> string_map_t;

const std::string_view declaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";

// Reads names, values and texts as libxml2 has them in a tree.
struct document_rules_t
{
    static constexpr bool adds_tool = false;

    // libxml2 splits names at colons, joins them again if the prefix is not declared, and takes
    // declarations for no attributes.
    static bool read_name(std::string_view name, std::wstring& wide)
    {
        const std::size_t colon = name.find(':');
        if (colon == std::string_view::npos)
            return name != "xmlns" && decode_name(name, wide);
        const std::string_view prefix = name.substr(0, colon);
        const std::string_view local = name.substr(colon + 1);
        return prefix != "xml" && prefix != "xmlns" && decode_name(prefix, wide) &&
               local.find(':') == std::string_view::npos && decode_name(local, wide) &&
               decode_name(name, wide);
    }

    static bool read_value(std::string_view value, std::wstring& wide)
    {
        return decode_references(value, text_context_t::attribute, "&", wide);
    }

    static bool read_type(std::string_view text, std::wstring& type)
    {
        return decode_references(text, text_context_t::element, "&", type);
    }

    static bool add_element(string_map_t& elements, std::wstring&& name, std::string_view text)
    {
        std::wstring wide;
        const bool is_read = decode_references(text, text_context_t::element, "&", wide);
        if (is_read)
            elements.emplace_hint(elements.end(), std::move(name), std::move(wide));
        return is_read;
    }

    static bool add_arg(string_map_t& args, std::wstring&& name, std::string_view text)
    {
        return add_element(args, std::move(name), text);
    }
};

// Reads them as libxml2 hands them out in the events of a log's parse.
struct log_rules_t
{
    static constexpr bool adds_tool = true;

    // These would change the state between the children of a message.
    static bool read_name(std::string_view name, std::wstring& wide)
    {
        return name != element_names::msg && name != element_names::log && decode_name(name, wide);
    }

    static bool read_value(std::string_view value, std::wstring& wide)
    {
        return decode_references(value, text_context_t::attribute, "&#38;", wide);
    }

    // The last event counts.
    static bool read_type(std::string_view text, std::wstring& type)
    {
        if (is_plain_text(text)) {
            type = ascii_to_wide(text);
            return true;
        }
        text_events_t events(text);
        if (!events.are_known())
            return false;
        while (events.next()) {
        }
        type = events.text();
        return true;
    }

    // The first event counts. A text without an event gives no element.
    static bool add_element(string_map_t& elements, std::wstring&& name, std::string_view text)
    {
        if (!text.empty() && is_plain_text(text)) {
            elements.emplace_hint(elements.end(), std::move(name), ascii_to_wide(text));
            return true;
        }
        text_events_t events(text);
        if (events.are_known() && events.next())
            elements.emplace_hint(elements.end(), std::move(name), events.text());
        return events.are_known();
    }

    // Events after the first one give texts without a name, of which the first one stays.
    static bool add_arg(string_map_t& args, std::wstring&& name, std::string_view text)
    {
        if (is_plain_text(text))
            return add_element(args, std::move(name), text);
        text_events_t events(text);
        if (!events.are_known())
            return false;
        events.next();
        args.emplace(std::move(name), events.text());
        if (args.count(std::wstring()) == 0 && events.next())
            args.emplace(std::wstring(), events.text());
        return true;
    }
};

// Reads one element of the written form: attributes, then arguments and elements in any order,
// then the type, then at most one severity. Returns false at anything else, and at the text's end.
template <typename Rules>
class element_recognizer_t
{
public:
    element_recognizer_t(scanner_t& scanner, message_t& message)
        : m_scanner(scanner), m_message(message), m_content(message_access_t::content(message))
    {}

    // Returns whether a text is well-formed but not as the rules can read it.
    bool has_unread_text() const { return m_has_unread_text; }

    bool recognize()
    {
        if (m_scanner.next() != token_t::start_tag || m_scanner.name() != element_names::msg ||
            !read_attributes())
            return false;
        token_t token = next_tag();
        while (token == token_t::start_tag && !m_has_severity && read_child())
            token = next_tag();
        return m_has_type && is_end_tag_of(token, element_names::msg);
    }

private:
    bool read_attributes()
    {
        std::size_t count = 0;
        for (attribute_t attribute; m_scanner.next_attribute(attribute); ++count) {
            std::wstring name;
            std::wstring value;
            if (!Rules::read_name(attribute.name, name) ||
                !Rules::read_value(attribute.value, value))
                return false;
            m_content.attributes.emplace_hint(m_content.attributes.end(), std::move(name),
                                              std::move(value));
        }
        // No element has an attribute twice.
        if (m_content.attributes.size() != count || !finish_start_tag())
            return false;
        if (Rules::adds_tool)
            message_access_t::add_tool(m_message);
        return true;
    }

    // The written form has no element without an end tag.
    bool finish_start_tag()
    {
        return m_scanner.finish_start_tag() == token_t::start_tag && !m_scanner.is_empty_element();
    }

    token_t next_tag()
    {
        const token_t token = m_scanner.next();
        const bool is_between_tags = token == token_t::text && is_blank_text(m_scanner.token());
        return is_between_tags ? m_scanner.next() : token;
    }

    bool is_end_tag_of(token_t token, std::string_view name) const
    {
        return token == token_t::end_tag && m_scanner.name() == name;
    }

    bool read_child()
    {
        const std::string_view name = m_scanner.name();
        if (name == element_names::severity)
            return m_has_type && read_severity();
        if (m_has_type)
            return false;
        if (name == element_names::arg)
            return read_arg();
        return name == element_names::type ? read_type() : read_element(name);
    }

    bool read_arg()
    {
        std::wstring name;
        std::string_view text;
        attribute_t attribute;
        if (!m_scanner.next_attribute(attribute) || attribute.name != element_names::arg_name ||
            !Rules::read_value(attribute.value, name) || m_scanner.next_attribute(attribute) ||
            !find_text(element_names::arg, text))
            return false;
        if (name.empty())
            name = generate_arg_name(m_content.next_arg_number);
        return accept(Rules::add_arg(m_content.args, std::move(name), text), text);
    }

    bool read_element(std::string_view name)
    {
        std::wstring key;
        std::string_view text;
        attribute_t attribute;
        return Rules::read_name(name, key) && !m_scanner.next_attribute(attribute) &&
               find_text(name, text) &&
               accept(Rules::add_element(m_content.elements, std::move(key), text), text);
    }

    bool read_type()
    {
        std::string_view text;
        attribute_t attribute;
        m_has_type = true;
        return !m_scanner.next_attribute(attribute) && find_text(element_names::type, text) &&
               accept(Rules::read_type(text, message_access_t::type(m_message)), text);
    }

    bool read_severity()
    {
        attribute_t attribute;
        std::string_view text;
        m_has_severity = true;
        if (m_scanner.next_attribute(attribute) || !find_text(element_names::severity, text) ||
            !is_plain_text(text))
            return false;
        m_message.set_severity(parse_severity(text));
        return true;
    }

    bool accept(bool is_read, std::string_view text)
    {
        m_has_unread_text = m_has_unread_text || !is_read;
        return is_read || find_fault(text) == text.size();
    }

    // Passes over the element's text and end tag.
    bool find_text(std::string_view name, std::string_view& text)
    {
        if (!finish_start_tag())
            return false;
        token_t token = m_scanner.next();
        if (token == token_t::text) {
            text = m_scanner.token();
            token = m_scanner.next();
        }
        return is_end_tag_of(token, name);
    }

    scanner_t& m_scanner;
    message_t& m_message;
    message_t::message_content_t& m_content;
    bool m_has_type = false;
    bool m_has_severity = false;
    bool m_has_unread_text = false;
};

bool is_end_of_document(scanner_t& scanner)
{
    const token_t token = scanner.next();
    return token == token_t::end || (token == token_t::text && is_blank_text(scanner.token()) &&
                                     scanner.next() == token_t::end);
}

} // namespace

boost::shared_ptr<message_t> recognize_document(std::string_view document)
{
    if (document.substr(0, declaration.size()) == declaration) {
        document.remove_prefix(declaration.size());
        while (!document.empty() && is_blank(document.front()))
            document.remove_prefix(1);
    }
    scanner_t scanner(document);
    auto message = boost::make_shared<message_t>();
    element_recognizer_t<document_rules_t> recognizer(scanner, *message);
    if (!recognizer.recognize() || recognizer.has_unread_text() || !is_end_of_document(scanner))
        message.reset();
    return message;
}

recognized_t recognize_log_message(std::string_view text)
{
    scanner_t scanner(text);
    recognized_t recognized = {boost::make_shared<message_t>()};
    element_recognizer_t<log_rules_t> recognizer(scanner, *recognized.message);
    const bool is_written_form = recognizer.recognize();
    if (is_written_form)
        recognized.size = static_cast<std::size_t>(scanner.position() - text.data());
    if (!is_written_form || recognizer.has_unread_text())
        recognized.message.reset();
    return recognized;
}

} // namespace velmoext_1_4_8

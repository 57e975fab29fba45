#include "log_oracle.h"

#include "message_fields.h"
#include "severity_oracle.h"
#include "xml_errors.h"
#include "xml_strings.h"

#include <boost/make_shared.hpp>

#include <libxml/encoding.h>
#include <libxml/parser.h>

#include <cstring>
#include <map>
#include <regex>
#include <utility>

using ROVA_2_18::strings::utf8_to_utf16;
using velmoext_1_4_8::message_t;

namespace
{

typedef std::map<std::wstring, std::wstring> string_map_t;

// If several attributes have one name, the first one counts.
string_map_t read_attributes(const xmlChar** attributes)
{
    string_map_t read;
    for (; attributes != nullptr && *attributes != nullptr; attributes += 2)
        read.emplace(wide_from_xml(attributes[0]), wide_from_xml(attributes[1]));
    return read;
}

// A zero byte ends the text. The rest after the last '>' is dropped.
std::string text_to_parse(const std::string& bytes)
{
    const std::string text = bytes.substr(0, bytes.find('\0'));
    return text.substr(0, text.rfind('>') + 1);
}

// Returns an empty string if no encoding is declared in well-formed text.
std::string declared_encoding(const std::string& text)
{
    static const std::regex declaration(
        "(?:\xEF\xBB\xBF)?<\\?xml\\s+version\\s*=\\s*(?:'1\\.[0-9]+'|\"1\\.[0-9]+\")"
        "\\s+encoding\\s*=\\s*(?:'([A-Za-z][-A-Za-z0-9._]*)'|\"([A-Za-z][-A-Za-z0-9._]*)\")"
        "(?:\\s+standalone\\s*=\\s*(?:'(?:yes|no)'|\"(?:yes|no)\"))?\\s*\\?>");
    std::smatch found;
    if (!std::regex_search(text, found, declaration, std::regex_constants::match_continuous))
        return std::string();
    return found[1].matched ? found[1] : found[2];
}

bool is_unknown_encoding(const std::string& name)
{
    xmlCharEncodingHandler* const converter = xmlFindCharEncodingHandler(name.c_str());
    const bool is_unknown = converter == nullptr;
    xmlCharEncCloseFunc(converter);
    return is_unknown;
}

// Whether the beginning of the text can be the declaration of an encoding.
bool may_declare_encoding(const std::string& text)
{
    return text.find("<?xml") <= 3 && text.find("encoding") != std::string::npos;
}

int parse_whole(xmlSAXHandler& table, void* context, const std::string& text)
{
// The rules name this function, which later releases of libxml2 have deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    return xmlSAXUserParseMemory(&table, context, text.data(), static_cast<int>(text.size()));
#pragma GCC diagnostic pop
}

} // namespace

// Nothing that libxml2 reports after a fault counts.
struct log_callbacks_t
{
    log_oracle_t& oracle;
    const xml_errors_t& errors;

    static void start_document(void* context)
    {
        const auto& self = *static_cast<log_callbacks_t*>(context);
        self.oracle.m_has_begun = !self.errors.has_fault();
    }

    static void end_document(void* /*context*/) {}

    static void start(void* context, const xmlChar* name, const xmlChar** attributes)
    {
        const auto& self = *static_cast<log_callbacks_t*>(context);
        if (!self.errors.has_fault())
            self.oracle.start_element(from_xml(name), attributes);
    }

    static void end(void* context, const xmlChar* name)
    {
        const auto& self = *static_cast<log_callbacks_t*>(context);
        if (!self.errors.has_fault())
            self.oracle.end_element(from_xml(name));
    }

    static void characters(void* context, const xmlChar* text, int /*length*/)
    {
        const auto& self = *static_cast<log_callbacks_t*>(context);
        if (!self.errors.has_fault())
            self.oracle.characters(from_xml(text));
    }
};

log_oracle_t::reading_t log_oracle_t::read(const std::string& new_bytes)
{
    m_reading = reading_t();
    m_has_begun = false;
    const std::string text = text_to_parse(new_bytes);
    const std::string encoding = declared_encoding(text);
    // Later releases of libxml2 take an unknown encoding for UTF-8.
    if (!encoding.empty() && is_unknown_encoding(encoding)) {
        m_reading.is_read = true;
        m_reading.start = start_t::fails;
        return std::move(m_reading);
    }
    // Later releases also parse an empty text.
    m_reading.is_read = !text.empty() && parse(text) >= 0;
    if (!m_has_begun && may_declare_encoding(text))
        m_reading.start = start_t::either;
    return std::move(m_reading);
}

int log_oracle_t::parse(const std::string& text)
{
    xmlSAXHandler table = {};
    // If the table were marked as SAX2, libxml2 2.9.14 would call none of the element callbacks.
    table.initialized = 1;
    table.startDocument = log_callbacks_t::start_document;
    table.endDocument = log_callbacks_t::end_document;
    table.startElement = log_callbacks_t::start;
    table.endElement = log_callbacks_t::end;
    table.characters = log_callbacks_t::characters;
    const xml_errors_t errors;
    log_callbacks_t callbacks = {*this, errors};
    return parse_whole(table, &callbacks, text);
}

void log_oracle_t::start_element(const std::string& name, const xmlChar** attributes)
{
    m_element = name;
    if (name == "log") {
        m_state = in_log;
    } else if (name == "msg") {
        start_message(attributes);
    } else {
        m_state = in_child;
        if (name == "arg")
            start_arg(attributes);
    }
}

void log_oracle_t::start_message(const xmlChar** attributes)
{
    m_state = in_message;
    m_message = boost::make_shared<message_t>();
    message_t::message_content_t content;
    content.attributes = read_attributes(attributes);
    m_message->set_content(content);
    const auto source = content.attributes.find(L"source");
    if (source != content.attributes.end())
        m_message->set_source(source->second);
}

void log_oracle_t::start_arg(const xmlChar** attributes)
{
    m_arg_name = read_attributes(attributes)[L"name"];
    if (!m_arg_name.empty() || !m_message)
        return;
    message_t::message_content_t content = m_message->get_content();
    m_arg_name = L"arg" + std::to_wstring(content.next_arg_number++);
    m_message->set_content(content);
}

// Ignores the length that libxml2 reports.
void log_oracle_t::characters(const char* text)
{
    if (m_state == in_child && m_message && m_element != "msg" && m_element != "log")
        add_text(std::string(text, std::strcspn(text, "<")));
}

void log_oracle_t::add_text(const std::string& utf8)
{
    const std::wstring text = utf8_to_utf16(utf8);
    if (m_element == "type")
        return m_message->set_type(text);
    if (m_element == "severity")
        return m_message->set_severity(severity_of(text));
    message_t::message_content_t content = m_message->get_content();
    if (m_element == "arg")
        content.args.emplace(std::exchange(m_arg_name, std::wstring()), text);
    else
        content.elements.emplace(utf8_to_utf16(m_element), text);
    m_message->set_content(content);
}

void log_oracle_t::end_element(const std::string& name)
{
    if (m_state == in_child)
        m_element = "msg";
    if (name != "msg")
        return;
    m_state = outside;
    m_element = "log";
    if (!m_message || m_message->empty())
        return;
    m_reading.delivered.push_back(*m_message);
    m_reading.messages.push_back(m_message);
}

std::string text_of(const log_oracle_t::reading_t& reading)
{
    std::string text;
    for (const message_t& message : reading.delivered)
        text += fields_of(message);
    text += "afterwards\n";
    for (const auto& message : reading.messages)
        text += fields_of(message);
    return text;
}

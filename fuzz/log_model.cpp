#include "log_model.h"

#include "common_rules.h"
#include "quiet_xml.h"

#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <libxml/parser.h>

#include <algorithm>
#include <utility>

using ROVA_2_18::strings::utf8_to_utf16;
using velmoext_1_4_8::message_t;

namespace
{

std::string to_text(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

// A zero byte ends the text, and what follows the last '>' is dropped. A foreign encoding is damage
// in its declaration.
std::string part_to_parse(const std::string& bytes)
{
    std::string text = bytes.substr(0, bytes.find('\0'));
    text = text.substr(0, text.rfind('>') + 1);
    return declares_foreign_encoding(text) ? text.substr(0, 4) : text;
}

} // namespace

struct log_model_t::collector_t
{
    static events_t& events(void* context) { return *static_cast<events_t*>(context); }

    static void nothing(void* /*context*/) {}

    static void start(void* context, const xmlChar* name, const xmlChar** attributes)
    {
        event_t event = {event_t::start, to_text(name), {}};
        std::size_t left = attributes_read;
        for (; attributes != nullptr && *attributes != nullptr && left-- != 0; attributes += 2)
            event.attributes.emplace(to_text(attributes[0]), to_text(attributes[1]));
        events(context).push_back(std::move(event));
    }

    static void end(void* context, const xmlChar* name)
    {
        events(context).push_back({event_t::end, to_text(name), {}});
    }

    // The length does not count.
    static void characters(void* context, const xmlChar* text, int /*length*/)
    {
        std::string run = to_text(text);
        run.resize(std::min(run.find('<'), run.size()));
        events(context).push_back({event_t::characters, std::move(run), {}});
    }
};

bool log_model_t::collect(const std::string& document, events_t& events)
{
    xmlSAXHandler table = {};
    // Else libxml2 would look for the callbacks that know namespaces, and report no element.
    table.initialized = 1;
    table.startDocument = collector_t::nothing;
    table.endDocument = collector_t::nothing;
    table.startElement = collector_t::start;
    table.endElement = collector_t::end;
    table.characters = collector_t::characters;
    const quiet_xml_t quiet;
    return xmlSAXUserParseMemory(&table, &events, document.data(),
                                 static_cast<int>(document.size())) >= 0;
}

log_model_t::reading_t log_model_t::read(const std::string& new_bytes)
{
    reading_t reading;
    events_t events;
    reading.is_read = !new_bytes.empty() && collect(part_to_parse(new_bytes), events);
    for (const event_t& event : events)
        if (event.kind == event_t::start)
            on_start(event);
        else if (event.kind == event_t::end)
            on_end(event, reading.messages);
        else
            on_characters(event);
    return reading;
}

void log_model_t::on_start(const event_t& event)
{
    m_element = event.text;
    m_state = event.text == "log" ? 1 : event.text == "msg" ? 2 : 3;
    if (event.text == "arg")
        on_arg(event);
    if (m_state != 2)
        return;
    m_message = boost::make_shared<message_t>();
    message_t::message_content_t content;
    for (const auto& attribute : event.attributes)
        content.attributes.emplace(utf8_to_utf16(attribute.first), utf8_to_utf16(attribute.second));
    m_message->set_content(content);
    const auto source = content.attributes.find(L"source");
    if (source != content.attributes.end())
        m_message->set_source(source->second);
}

void log_model_t::on_arg(const event_t& event)
{
    const auto name = event.attributes.find("name");
    m_arg_name = name != event.attributes.end() ? utf8_to_utf16(name->second) : std::wstring();
    if (!m_arg_name.empty() || !m_message)
        return;
    message_t::message_content_t content = m_message->get_content();
    m_arg_name = L"arg" + std::to_wstring(content.next_arg_number++);
    m_message->set_content(content);
}

void log_model_t::on_characters(const event_t& event)
{
    if (m_state != 3 || !m_message || m_element == "msg" || m_element == "log")
        return;
    const std::wstring text = utf8_to_utf16(event.text);
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

void log_model_t::on_end(const event_t& event, std::vector<message_t>& messages)
{
    if (m_state == 3)
        m_element = "msg";
    if (event.text != "msg")
        return;
    m_state = 0;
    m_element = "log";
    if (m_message && !m_message->empty())
        messages.push_back(*m_message);
}

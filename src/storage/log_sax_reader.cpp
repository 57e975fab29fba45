#include "storage/log_sax_reader.h"

#include "core/message_access.h"
#include "encoding/element_names.h"
#include "encoding/severity_text.h"
#include "xml/error_scope.h"
#include "xml/handles.h"
#include "xml/library.h"
#include "xml/limits.h"
#include "xml/utf8.h"

#include <boost/make_shared.hpp>

#include <libxml/parserInternals.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <string_view>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

// No longer text is a severity, whatever the case of its letters.
const std::size_t max_severity_bytes = 64;

// The text of an event extends to the next tag, however much of it libxml2 reported.
std::string_view text_to_next_tag(const char* text, std::size_t max_size)
{
    const std::size_t size = strnlen(text, max_size);
    const auto* const tag = static_cast<const char*>(std::memchr(text, '<', size));
    return std::string_view(text, tag ? static_cast<std::size_t>(tag - text) : size);
}

std::string_view text_to_next_tag(const char* text)
{
    const char* const tag = std::strchr(text, '<');
    return std::string_view(text, tag ? static_cast<std::size_t>(tag - text) : std::strlen(text));
}

// The first character distinguishes most names.
bool is_same(const char* name, const char* other)
{
    return *name == *other && std::strcmp(name, other) == 0;
}

std::wstring read_text(const xmlChar* text)
{
    return text ? utf8_to_wide(from_xml(text)) : std::wstring();
}

} // namespace

void log_sax_reader::set_callback(const message_callback_t& callback)
{
    message_callback = callback;
}

int log_sax_reader::parse(const std::string& document, sizes_t sizes)
{
    if (document.empty())
        return -1;
    initialize_xml_library();
    xml_error_scope_t errors;
    m_errors = &errors;
    const xml_parser_t parser(
        xmlCreateMemoryParserCtxt(document.data(), static_cast<int>(document.size())));
    const int status = parser ? parse(*parser, sizes) : -1;
    m_errors = nullptr;
    if (m_failure)
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    if (!parser || errors.has_run_out_of_memory())
        throw std::bad_alloc();
    return status;
}

// Not xmlCtxtReadMemory(): with some releases of libxml2 it reads the document in chunks, and
// splits text at their ends.
int log_sax_reader::parse(xmlParserCtxt& parser, sizes_t sizes)
{
    *parser.sax = make_table();
    parser.userData = this;
    m_parser = &parser;
    if (sizes == sizes_t::unlimited)
        xmlCtxtUseOptions(&parser, XML_PARSE_HUGE);
    xmlParseDocument(&parser);
    if (parser.wellFormed)
        return 0;
    return parser.errNo != XML_ERR_OK ? parser.errNo : -1;
}

xmlSAXHandler log_sax_reader::make_table()
{
    xmlSAXHandler table = {};
    table.startDocument = on_document;
    table.endDocument = on_document;
    table.startElement = on_start_element;
    table.endElement = on_end_element;
    table.characters = on_characters;
    // Marked as a table of SAX1, whose element callbacks these are: with the mark of SAX2, some
    // releases of libxml2 call none of them.
    table.initialized = 1;
    return table;
}

void log_sax_reader::take(const boost::shared_ptr<message_t>& message)
{
    current_message = message;
    end_message();
}

void log_sax_reader::on_document(void* /*reader*/) {}

void log_sax_reader::on_start_element(void* reader, const xmlChar* name, const xmlChar** attributes)
{
    auto& self = *static_cast<log_sax_reader*>(reader);
    self.guard([&] { self.start_element(from_xml(name), attributes); });
}

void log_sax_reader::on_end_element(void* reader, const xmlChar* name)
{
    auto& self = *static_cast<log_sax_reader*>(reader);
    self.guard([&] { self.end_element(from_xml(name)); });
}

void log_sax_reader::on_characters(void* reader, const xmlChar* text, int length)
{
    auto& self = *static_cast<log_sax_reader*>(reader);
    if (self.is_in_text())
        self.guard([&] { self.characters(from_xml(text), static_cast<std::size_t>(length)); });
}

// libxml2's frames know nothing of exceptions: none may pass through them. Nothing after one
// counts, nor after a fault of the document, nor after libxml2 ran out of memory.
template <typename Step>
void log_sax_reader::guard(const Step& step) noexcept
{
    if (m_failure || m_errors->has_run_out_of_memory() || !m_parser->wellFormed)
        return;
    try {
        step();
    } catch (...) {
        m_failure = std::current_exception();
    }
}

log_sax_reader::element_t log_sax_reader::element_of(const char* name)
{
    static const struct
    {
        const char* name;
        element_t element;
    } known[] = {{element_names::arg, element_t::arg},
                 {element_names::type, element_t::type},
                 {element_names::severity, element_t::severity},
                 {element_names::msg, element_t::msg},
                 {element_names::log, element_t::log}};
    const auto* const found =
        std::find_if(std::begin(known), std::end(known),
                     [&](const auto& candidate) { return is_same(name, candidate.name); });
    return found == std::end(known) ? element_t::other : found->element;
}

void log_sax_reader::start_element(const char* name, const xmlChar** attributes)
{
    current_element = element_of(name);
    if (current_element == element_t::log) {
        parse_state = in_log;
    } else if (current_element == element_t::msg) {
        start_message(attributes);
    } else {
        parse_state = in_child;
        if (current_element == element_t::arg)
            start_arg(attributes);
        else if (current_element == element_t::type)
            m_look_ahead_left = limits::max_look_ahead_bytes;
        else if (current_element == element_t::other)
            m_other_name = utf8_to_wide(name);
    }
}

void log_sax_reader::start_message(const xmlChar** attributes)
{
    current_message = boost::make_shared<message_t>();
    parse_state = in_message;
    string_map_t& read = message_access_t::content(*current_message).attributes;
    for (const xmlChar** at = attributes; at && at[0]; at += 2)
        read.emplace_hint(read.end(), read_text(at[0]), read_text(at[1]));
    message_access_t::add_tool(*current_message);
}

void log_sax_reader::start_arg(const xmlChar** attributes)
{
    const xmlChar** name = attributes;
    while (name && name[0] && !is_same(from_xml(name[0]), element_names::arg_name))
        name += 2;
    pending_arg_name = name && name[0] ? read_text(name[1]) : std::wstring();
    if (pending_arg_name.empty() && current_message)
        pending_arg_name =
            generate_arg_name(message_access_t::content(*current_message).next_arg_number);
}

void log_sax_reader::end_element(const char* name)
{
    if (parse_state == in_child)
        current_element = element_t::msg;
    if (is_same(name, element_names::msg))
        end_message();
}

void log_sax_reader::end_message()
{
    parse_state = outside;
    current_element = element_t::log;
    if (!current_message || current_message->empty())
        return;
    if (!m_errors)
        return message_callback(current_message);
    // The handlers that see the message may use libxml2 too.
    const xml_error_scope_t::pause_t pause(*m_errors);
    message_callback(current_message);
}

// A log may have such elements before any message. Most events bring the white space between
// others.
bool log_sax_reader::is_in_text() const
{
    return parse_state == in_child && current_element != element_t::msg &&
           current_element != element_t::log && current_message;
}

void log_sax_reader::characters(const char* text, std::size_t length)
{
    switch (current_element) {
    case element_t::type:
        set_type(text, length);
        break;
    case element_t::severity:
        set_severity(text);
        break;
    case element_t::arg:
        add_arg(text);
        break;
    default:
        add_element(text);
    }
}

void log_sax_reader::set_type(const char* text, std::size_t length)
{
    const std::string_view type = text_to_next_tag(text, length + m_look_ahead_left);
    m_look_ahead_left -= type.size() - std::min(type.size(), length);
    message_access_t::type(*current_message) = utf8_to_wide(type);
}

void log_sax_reader::set_severity(const char* text)
{
    current_message->set_severity(parse_severity(text_to_next_tag(text, max_severity_bytes)));
}

void log_sax_reader::add_arg(const char* text)
{
    add_text(message_access_t::content(*current_message).args, std::move(pending_arg_name), text);
    pending_arg_name.clear();
}

// No further text of this element can count, so it is passed over like text between others.
void log_sax_reader::add_element(const char* text)
{
    add_text(message_access_t::content(*current_message).elements, std::move(m_other_name), text);
    current_element = element_t::msg;
}

// The first text of a key stays, so the text of a known key is not converted.
void log_sax_reader::add_text(string_map_t& texts, std::wstring&& key, const char* text)
{
    const auto position = texts.lower_bound(key);
    if (position == texts.end() || position->first != key)
        texts.emplace_hint(position, std::move(key), utf8_to_wide(text_to_next_tag(text)));
}

} // namespace velmoext_1_4_8

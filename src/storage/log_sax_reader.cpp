#include "storage/log_sax_reader.h"

#include "core/message_access.h"
#include "encoding/element_names.h"
#include "encoding/severity_text.h"
#include "xml/handles.h"
#include "xml/library.h"
#include "xml/wide_text.h"

#include <boost/make_shared.hpp>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

const char source_name[] = "source";

// No longer text is a severity, in whichever case.
const std::size_t longest_severity = 64;

// So many a dictionary finds fast.
const int most_names = 50000;

// So much of what follows a type's pieces is looked at, over and over again for each.
const std::size_t most_looked_ahead = 65536;

// A piece of text counts up to the next tag, however much of it libxml2 reported. The tag is looked
// for in the bytes: decoding all that follows, for each piece, would take the square of a log.
std::size_t size_to_next_tag(const char* text)
{
    const char* const tag = std::strchr(text, '<');
    return tag ? static_cast<std::size_t>(tag - text) : std::strlen(text);
}

std::size_t size_to_next_tag(const char* text, std::size_t most)
{
    const std::size_t size = strnlen(text, most);
    const auto* const tag = static_cast<const char*>(std::memchr(text, '<', size));
    return tag ? static_cast<std::size_t>(tag - text) : size;
}

// By default the names of one text may take 10,000,000 bytes. A log holds those of very many
// messages, and one name too many would cost all that follows.
void lift_limit(xmlDict& names)
{
    xmlDictSetLimit(&names, 0);
}

// The first character tells most names apart.
bool is_same(const char* name, const char* other)
{
    return *name == *other && std::strcmp(name, other) == 0;
}

std::wstring read_text(const xmlChar* text)
{
    return text ? wide_text(from_xml(text)) : std::wstring();
}

} // namespace

void log_sax_reader::set_callback(const message_callback_t& callback)
{
    message_callback = callback;
}

int log_sax_reader::parse(const std::string& text)
{
    initialize_xml_library();
    xml_error_scope_t silence;
    m_silence = &silence;
    const int answer = parse_document(text);
    m_full_dictionaries.clear();
    m_has_lacked_memory = silence.has_lacked_memory();
    if (m_failure)
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    return answer;
}

int log_sax_reader::parse_document(const std::string& text)
{
    const xml_parser_t parser(
        xmlCreateMemoryParserCtxt(text.data(), static_cast<int>(text.size())));
    if (!parser)
        return -1;
    m_parser = parser.get();
    *parser->sax = make_table();
    parser->userData = this;
    // Behind a fault within a comment libxml2 reads on: told of what comes, guard() ends that.
    parser->recovery = 1;
    lift_limit(*parser->dict);
    xmlParseDocument(parser.get());
    if (parser->wellFormed)
        return 0;
    return parser->errNo != XML_ERR_OK ? parser->errNo : -1;
}

xmlSAXHandler log_sax_reader::make_table()
{
    xmlSAXHandler table = {};
    table.startDocument = on_document;
    table.endDocument = on_document;
    table.startElement = on_start_element;
    table.endElement = on_end_element;
    table.characters = on_characters;
    table.processingInstruction = on_instruction;
    // Marked as a table of the first SAX, whose element callbacks these are: with the mark of the
    // second one, some releases of libxml2 call none of them.
    table.initialized = 1;
    return table;
}

void log_sax_reader::on_document(void* /*reader*/) {}

void log_sax_reader::on_start_element(void* reader, const xmlChar* name, const xmlChar** attributes)
{
    auto& self = *static_cast<log_sax_reader*>(reader);
    self.guard([&] {
        self.make_room_for_names();
        self.start_element(from_xml(name), attributes);
    });
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
        self.guard([&] { self.characters(from_xml(text), length); });
}

void log_sax_reader::on_instruction(void* reader, const xmlChar* /*target*/,
                                    const xmlChar* /*text*/)
{
    auto& self = *static_cast<log_sax_reader*>(reader);
    self.guard([&] { self.make_room_for_names(); });
}

// libxml2's frames know nothing of exceptions: none may fly through them. What it tells without
// memory is not all there was. Nothing behind either counts, nor behind a fault.
template <typename Step>
void log_sax_reader::guard(const Step& step) noexcept
{
    if (m_failure || m_silence->has_lacked_memory() || !m_parser->wellFormed) {
        m_parser->instate = XML_PARSER_EOF;
        return;
    }
    try {
        step();
    } catch (...) {
        m_failure = std::current_exception();
    }
}

// libxml2 looks for each name among all of a dictionary, in a few thousand places. It still has
// names of the former ones, of elements that have not ended.
void log_sax_reader::make_room_for_names()
{
    if (xmlDictSize(m_parser->dict) < most_names)
        return;
    xml_dictionary_t dictionary(xmlDictCreate());
    if (!dictionary)
        return;
    lift_limit(*dictionary);
    m_full_dictionaries.emplace_back();
    m_full_dictionaries.back().reset(std::exchange(m_parser->dict, dictionary.release()));
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
            m_looked_ahead = 0;
        else if (current_element == element_t::other)
            m_other_name = wide_text(name);
    }
}

void log_sax_reader::start_message(const xmlChar** attributes)
{
    current_message = boost::make_shared<message_t>();
    parse_state = in_message;
    texts_t& read = message_access::content(*current_message).attributes;
    const xmlChar* source = nullptr;
    for (const xmlChar** at = attributes; at && at[0]; at += 2) {
        read.emplace_hint(read.end(), read_text(at[0]), read_text(at[1]));
        if (!source && is_same(from_xml(at[0]), source_name))
            source = at[1];
    }
    if (source)
        current_message->set_source(read_text(source));
}

void log_sax_reader::start_arg(const xmlChar** attributes)
{
    const xmlChar** name = attributes;
    while (name && name[0] && !is_same(from_xml(name[0]), element_names::arg_name))
        name += 2;
    pending_arg_name = name && name[0] ? read_text(name[1]) : std::wstring();
    if (pending_arg_name.empty() && current_message)
        pending_arg_name =
            generate_arg_name(message_access::content(*current_message).next_arg_number);
}

void log_sax_reader::end_element(const char* name)
{
    if (parse_state == in_child)
        current_element = element_t::msg;
    if (!is_same(name, element_names::msg))
        return;
    parse_state = outside;
    current_element = element_t::log;
    if (current_message && !current_message->empty())
        deliver_message();
}

// The handlers that see the message may use libxml2 too.
void log_sax_reader::deliver_message()
{
    const xml_error_scope_t::pause_t pause(*m_silence);
    message_callback(current_message);
}

// A log may hold such elements before any message. Most calls bring the white space between others.
bool log_sax_reader::is_in_text() const
{
    return parse_state == in_child && current_element != element_t::msg &&
           current_element != element_t::log && current_message;
}

void log_sax_reader::characters(const char* text, int length)
{
    switch (current_element) {
    case element_t::type:
        set_type(text, static_cast<std::size_t>(length));
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

// Of a type the last piece counts. Where very many follow one another it is nothing more than what
// libxml2 reports of it: to take each up to the tag would take the square of the type.
void log_sax_reader::set_type(const char* text, std::size_t length)
{
    const std::size_t size = m_looked_ahead < most_looked_ahead ? size_to_next_tag(text) : length;
    m_looked_ahead += size - std::min(size, length);
    message_access::type(*current_message) = wide_text(text, size);
}

void log_sax_reader::set_severity(const char* text)
{
    current_message->set_severity(
        parse_severity(std::string(text, size_to_next_tag(text, longest_severity))));
}

void log_sax_reader::add_arg(const char* text)
{
    add_text(message_access::content(*current_message).args, std::move(pending_arg_name), text);
    pending_arg_name.clear();
}

// No further text of this element can count, so it is passed over like text between others.
void log_sax_reader::add_element(const char* text)
{
    add_text(message_access::content(*current_message).elements, std::move(m_other_name), text);
    current_element = element_t::msg;
}

// The first text of a key stays, so that of a known key need not even be looked at.
void log_sax_reader::add_text(texts_t& texts, std::wstring&& key, const char* text)
{
    const auto place = texts.lower_bound(key);
    if (place == texts.end() || place->first != key)
        texts.emplace_hint(place, std::move(key), wide_text(text, size_to_next_tag(text)));
}

} // namespace velmoext_1_4_8

#include "config_file.h"

#include "input_file.h"
#include "output_text.h"

#include <bag_limits.h>
#include <xml_errors.h>

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace velmolint
{
namespace
{

const char root_name[] = "bag";
const char entry_name[] = "message_type";
const char no_line[] = " line 0";

// Without the library's limits, libxml2's time could be quadratic.
namespace limits = basekit2::limits;

const char too_many_attributes[] =
    "The element has more than 10,000 attributes or equals signs. Use fewer of them.";

constexpr std::size_t root_depth = 1;
constexpr std::size_t entry_depth = 2;
constexpr std::size_t property_depth = 3;

const char* from_xml(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

struct parser_deleter_t
{
    void operator()(xmlParserCtxt* parser) const
    {
        // Also frees the document that libxml2 creates at an entity's declaration.
        xmlCtxtReset(parser);
        xmlFreeParserCtxt(parser);
    }
};

/// The reason for which the library ignores a file.
struct fault_t
{
    position_t position;
    std::string check;
    std::string message;
};

class config_parser_t
{
public:
    bool parse(const std::string& bytes);

    /// Requires that parse() returned false.
    const fault_t& fault() const { return *m_fault; }
    std::vector<entry_t>& entries() { return m_entries; }

private:
    static xmlSAXHandler make_table();
    static int on_read(void* parser, char* buffer, int size);
    static void on_document(void* parser);
    static void on_document_type(void* parser, const xmlChar* name, const xmlChar* public_id,
                                 const xmlChar* system_id);
    static void on_start(void* parser, const xmlChar* name, const xmlChar** attributes);
    static void on_end(void* parser, const xmlChar* name);
    static void on_text(void* parser, const xmlChar* text, int length);
    static void on_comment(void* parser, const xmlChar* text);
    static void on_instruction(void* parser, const xmlChar* target, const xmlChar* data);
    static void on_error(void* parser, basekit2::xml_error_t* error);

    template <typename Step>
    void guard(const Step& step) noexcept;

    position_t current_position() const;
    /// Position of the markup before the root, whose columns are unknown: libxml2 reports no event
    /// for white space there.
    position_t current_line() const { return {current_position().line, 0}; }
    void refuse(const position_t& position, const std::string& check, const std::string& message);
    void start(const std::string& name, const xmlChar** attributes);
    void add_attributes(const xmlChar** attributes);
    void add_text(std::string_view text);
    void end();
    void add_error(const basekit2::xml_error_t& error);
    void check_end(std::size_t size);

    std::unique_ptr<xmlParserCtxt, parser_deleter_t> m_parser;
    std::string_view m_unread;
    position_t m_event_end = {1, 1};      ///< of the last event, the begin of the next markup
    std::size_t m_equals_since_event = 0; ///< equals signs that were read since the last event
    std::size_t m_compared_bytes = 0;
    std::size_t m_depth = 0;
    bool m_is_in_entry = false;
    std::vector<entry_t> m_entries;
    std::optional<fault_t> m_fault; ///< the first one
    std::exception_ptr m_failure;   ///< the first exception of a callback
};

bool config_parser_t::parse(const std::string& bytes)
{
    m_unread = bytes;
    xmlSAXHandler table = make_table();
    m_parser.reset(
        xmlCreateIOParserCtxt(&table, this, on_read, nullptr, this, XML_CHAR_ENCODING_NONE));
    if (!m_parser)
        throw std::bad_alloc();
    xmlCtxtUseOptions(m_parser.get(), XML_PARSE_NONET | XML_PARSE_NOENT);
    const basekit2::xml_errors_t former_handlers;
    xmlSetStructuredErrorFunc(this, on_error);
    xmlParseDocument(m_parser.get());
    if (m_failure)
        std::rethrow_exception(m_failure);
    check_end(bytes.size());
    return !m_fault;
}

void config_parser_t::check_end(std::size_t size)
{
    // The input was ended before its end.
    if (m_equals_since_event > limits::max_element_attributes)
        m_fault = {m_event_end, "config-limit", too_many_attributes};
    // libxml2 reports too many names as an allocation failure.
    if (xmlDictGetUsage(basekit2::dictionary_of(*m_parser)) > limits::max_name_bytes)
        m_fault = {m_event_end, "config-limit",
                   "The names of elements and attributes take more than 256 KiB. Use fewer names."};
    if (!m_fault && !basekit2::is_used_up(*m_parser, size))
        refuse(m_event_end, "config-syntax",
               "The file is not well-formed XML: it goes on after the end of the document. "
               "Remove the rest.");
}

// Ends the input at the first fault: libxml2 could take very long over the faults that follow. Ends
// it also in a tag with too many attributes, of which each has an equals sign: libxml2 reports them
// only at the end of the tag.
int config_parser_t::on_read(void* parser, char* buffer, int size)
{
    auto& self = *static_cast<config_parser_t*>(parser);
    if (self.m_fault || self.m_failure)
        return 0;
    if (self.m_equals_since_event > limits::max_element_attributes)
        return 0;
    const std::size_t count = self.m_unread.copy(buffer, static_cast<std::size_t>(size));
    self.m_unread.remove_prefix(count);
    self.m_equals_since_event += static_cast<std::size_t>(std::count(buffer, buffer + count, '='));
    return static_cast<int>(count);
}

// Sets the limit here and not earlier: since 2.13, each parse begins with libxml2's own limit.
void config_parser_t::on_document(void* parser)
{
    const auto& self = *static_cast<config_parser_t*>(parser);
    xmlDictSetLimit(basekit2::dictionary_of(*self.m_parser), limits::max_name_bytes);
}

xmlSAXHandler config_parser_t::make_table()
{
    xmlSAXHandler table = {};
    table.startDocument = on_document;
    table.internalSubset = on_document_type;
    table.startElement = on_start;
    table.endElement = on_end;
    table.characters = on_text;
    table.ignorableWhitespace = on_text;
    table.cdataBlock = on_text;
    table.comment = on_comment;
    table.processingInstruction = on_instruction;
    // Marks the table as SAX1, which reports names as they are written.
    table.initialized = 1;
    return table;
}

void config_parser_t::on_document_type(void* parser, const xmlChar* /*name*/,
                                       const xmlChar* /*public_id*/, const xmlChar* /*system_id*/)
{
    auto& self = *static_cast<config_parser_t*>(parser);
    self.guard([&self] {
        self.refuse(self.current_line(), "config-doctype",
                    "The library ignores a file with a document type. Remove it.");
    });
}

void config_parser_t::on_start(void* parser, const xmlChar* name, const xmlChar** attributes)
{
    auto& self = *static_cast<config_parser_t*>(parser);
    self.guard([&] { self.start(from_xml(name), attributes); });
}

void config_parser_t::on_end(void* parser, const xmlChar* /*name*/)
{
    auto& self = *static_cast<config_parser_t*>(parser);
    self.guard([&self] { self.end(); });
}

void config_parser_t::on_text(void* parser, const xmlChar* text, int length)
{
    auto& self = *static_cast<config_parser_t*>(parser);
    self.guard([&] { self.add_text({from_xml(text), static_cast<std::size_t>(length)}); });
}

void config_parser_t::on_comment(void* parser, const xmlChar* /*text*/)
{
    static_cast<config_parser_t*>(parser)->guard([] {});
}

void config_parser_t::on_instruction(void* parser, const xmlChar* /*target*/,
                                     const xmlChar* /*data*/)
{
    static_cast<config_parser_t*>(parser)->guard([] {});
}

void config_parser_t::on_error(void* parser, basekit2::xml_error_t* error)
{
    auto& self = *static_cast<config_parser_t*>(parser);
    // Names with a colon are names like any other to the library.
    if (error->level >= XML_ERR_ERROR && error->domain != XML_FROM_NAMESPACE)
        self.guard([&] { self.add_error(*error); });
}

// Keeps exceptions out of libxml2's frames.
template <typename Step>
void config_parser_t::guard(const Step& step) noexcept
{
    if (m_fault || m_failure)
        return;
    m_equals_since_event = 0;
    try {
        step();
        m_event_end = current_position();
    } catch (...) {
        m_failure = std::current_exception();
    }
}

position_t config_parser_t::current_position() const
{
    const int line = xmlSAX2GetLineNumber(m_parser.get());
    const int column = xmlSAX2GetColumnNumber(m_parser.get());
    return {static_cast<std::size_t>(line), static_cast<std::size_t>(column)};
}

void config_parser_t::refuse(const position_t& position, const std::string& check,
                             const std::string& message)
{
    m_fault = fault_t{position, check, message};
}

void config_parser_t::start(const std::string& name, const xmlChar** attributes)
{
    if (++m_depth > limits::max_element_depth)
        return refuse(m_event_end, "config-limit",
                      "Elements are nested more than 256 deep. Nest fewer of them.");
    if (m_depth == root_depth && name != root_name)
        return refuse(current_line(), "config-root",
                      "The root element is " + in_quotes(name) + ". Name it \"bag\".");
    if (m_depth == entry_depth && name == entry_name) {
        m_is_in_entry = true;
        m_entries.push_back({m_event_end, {}});
    }
    if (m_depth == property_depth && m_is_in_entry)
        m_entries.back().properties.push_back({name, std::string(), m_event_end});
    add_attributes(attributes);
}

void config_parser_t::add_attributes(const xmlChar** attributes)
{
    std::size_t count = 0;
    std::size_t name_bytes = 0;
    for (const xmlChar** at = attributes; at != nullptr && at[0] != nullptr; at += 2) {
        if (++count > limits::max_element_attributes || at[1] == nullptr)
            return refuse(m_event_end, "config-limit", too_many_attributes);
        name_bytes += std::strlen(from_xml(at[0]));
        if (m_depth == entry_depth && m_is_in_entry)
            m_entries.back().properties.push_back({from_xml(at[0]), from_xml(at[1]), m_event_end});
    }
    m_compared_bytes += count * name_bytes / 2;
    if (m_compared_bytes > limits::max_compared_bytes)
        refuse(m_event_end, "config-limit",
               "The elements have too many attributes in all. Use fewer of them.");
}

void config_parser_t::add_text(std::string_view text)
{
    if (m_depth != property_depth || !m_is_in_entry)
        return;
    property_t& property = m_entries.back().properties.back();
    property.value.append(text);
    if (property.value.size() > limits::max_value_bytes)
        refuse(property.position, "config-limit",
               "The text of the element exceeds 10,000,000 bytes. Shorten it.");
}

void config_parser_t::end()
{
    if (m_depth == property_depth && m_is_in_entry) {
        // The library ignores an element without a text.
        std::vector<property_t>& properties = m_entries.back().properties;
        if (properties.back().value.find_first_not_of(" \t\r\n") == std::string::npos)
            properties.pop_back();
    } else if (m_depth == entry_depth) {
        m_is_in_entry = false;
    }
    --m_depth;
}

void config_parser_t::add_error(const basekit2::xml_error_t& error)
{
    std::string reason = error.message != nullptr ? trimmed(error.message) : "unknown reason";
    // libxml2 knows no line of a start tag without a tree.
    const std::size_t unknown_line = reason.find(no_line);
    if (unknown_line != std::string::npos)
        reason.erase(unknown_line, std::strlen(no_line));
    const position_t position = {static_cast<std::size_t>(error.line),
                                 static_cast<std::size_t>(error.int2)};
    refuse(position, "config-syntax",
           "The file is not well-formed XML, and the library ignores it: " + reason);
}

} // namespace

std::string entry_t::value(const std::string& name) const
{
    for (const property_t& property : properties)
        if (property.name == name)
            return property.value;
    return std::string();
}

std::optional<config_file_t> read_config(const std::filesystem::path& file, findings_t& findings)
{
    std::string reason;
    const std::optional<std::string> bytes = read_input(file, reason);
    if (!bytes) {
        findings.error({file.string(), {}}, "config-unreadable",
                       "The file cannot be read: " + reason + ".");
        return std::nullopt;
    }
    config_parser_t parser;
    if (!parser.parse(*bytes)) {
        const fault_t& fault = parser.fault();
        findings.error({file.string(), fault.position}, fault.check, fault.message);
        return std::nullopt;
    }
    return config_file_t{file.string(), std::move(parser.entries())};
}

} // namespace velmolint

#include "document_oracle.h"

#include "message_fields.h"
#include "severity_oracle.h"
#include "xml_errors.h"
#include "xml_strings.h"

#include <boost/make_shared.hpp>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlreader.h>

#include <cstddef>
#include <memory>

namespace
{

using velmoext_1_4_8::message_t;

typedef boost::shared_ptr<message_t> message_ptr_t;
typedef std::unique_ptr<xmlTextReader, decltype(&xmlFreeTextReader)> reader_t;
typedef std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser_t;

// Ignores the declared encoding, since the document was converted from wide text.
const int options =
    XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC;

const std::size_t max_expanded_bytes = 10000000;
const std::size_t max_unlimited_bytes = 1000000;

const bool normalizes_attribute_entities = LIBXML_VERSION >= 21300;

xml_string_t content_of(const xmlNode* node)
{
    return xml_string_t(xmlNodeGetContent(node), xmlFree);
}

std::wstring arg_name(const xmlNode* arg, std::int32_t& next_arg_number)
{
    const xmlChar* const name = BAD_CAST "name";
    std::wstring read;
    if (xmlHasProp(arg, name) != nullptr)
        read = wide_from_xml(xml_string_t(xmlGetProp(arg, name), xmlFree).get());
    return read.empty() ? L"arg" + std::to_wstring(next_arg_number++) : read;
}

void read_child(const xmlNode* child, message_t& message, message_t::message_content_t& content)
{
    const std::string name = from_xml(child->name);
    const std::wstring text = wide_from_xml(content_of(child).get());
    if (name == "severity")
        message.set_severity(severity_of(text));
    else if (name == "type")
        message.set_type(text);
    else if (name == "arg")
        content.args.emplace(arg_name(child, content.next_arg_number), text);
    else
        content.elements.emplace(wide_from_xml(child->name), text);
}

// Removes comments and instructions directly in an entity: libxml2 2.9.14 takes them for text,
// later releases do not.
void remove_comments_and_instructions(xmlEntity* entity)
{
    for (xmlNode* node = entity->children; node != nullptr;) {
        xmlNode* const next = node->next;
        if (node->type == XML_COMMENT_NODE || node->type == XML_PI_NODE) {
            xmlUnlinkNode(node);
            xmlFreeNode(node);
        }
        node = next;
    }
}

void remove_comments_and_instructions_of_entities(const xmlDoc* document)
{
    const xmlDtd* const type = xmlGetIntSubset(document);
    if (type == nullptr)
        return;
    for (xmlNode* node = type->children; node != nullptr; node = node->next)
        if (node->type == XML_ENTITY_DECL)
            remove_comments_and_instructions(reinterpret_cast<xmlEntity*>(node));
}

message_ptr_t read_element(const xmlNode* node)
{
    remove_comments_and_instructions_of_entities(node->doc);
    const auto message = boost::make_shared<message_t>();
    message_t::message_content_t content;
    for (const xmlAttr* at = node->properties; at != nullptr; at = at->next)
        content.attributes.emplace(
            wide_from_xml(at->name),
            wide_from_xml(content_of(reinterpret_cast<const xmlNode*>(at)).get()));
    for (const xmlNode* child = node->children; child != nullptr; child = child->next)
        if (child->type == XML_ELEMENT_NODE)
            read_child(child, *message, content);
    message->set_content(content);
    return message;
}

// Adds up the sizes of the entities that are referred to below a node. Stops at the limit, since
// nested entities can expand to any number of bytes.
class expansion_t
{
public:
    static bool is_within_limit(const xmlNode* element)
    {
        expansion_t expansion;
        for (const xmlAttr* at = element->properties; at != nullptr; at = at->next)
            expansion.add_siblings(at->children);
        expansion.add_siblings(element->children);
        return expansion.m_bytes <= max_expanded_bytes;
    }

private:
    void add_siblings(const xmlNode* first)
    {
        for (const xmlNode* node = first; node != nullptr && m_bytes <= max_expanded_bytes;
             node = node->next)
            add(node);
    }

    void add(const xmlNode* node)
    {
        if (node->type == XML_ENTITY_REF_NODE)
            return add_entity(xmlGetDocEntity(node->doc, node->name));
        if (node->type != XML_ELEMENT_NODE)
            return;
        for (const xmlAttr* at = node->properties; at != nullptr; at = at->next)
            add_siblings(at->children);
        add_siblings(node->children);
    }

    void add_entity(const xmlEntity* entity)
    {
        if (entity == nullptr)
            return;
        m_bytes += static_cast<std::size_t>(xmlStrlen(entity->content));
        if (m_depth == 1000)
            m_bytes = max_expanded_bytes + 1;
        ++m_depth;
        add_siblings(entity->children);
        --m_depth;
    }

    std::size_t m_bytes = 0;
    int m_depth = 0;
};

bool is_message(const xmlNode* node)
{
    return node->type == XML_ELEMENT_NODE && from_xml(node->name) == std::string("msg");
}

bool has_entity(const xmlAttr* attribute)
{
    const xmlNode* node = attribute->children;
    while (node != nullptr && node->type != XML_ENTITY_REF_NODE)
        node = node->next;
    return node != nullptr;
}

bool has_attribute_with_entity(const xmlNode* element)
{
    for (const xmlAttr* at = element->properties; at != nullptr; at = at->next)
        if (has_entity(at))
            return true;
    for (const xmlNode* child = element->children; child != nullptr; child = child->next)
        if (child->type == XML_ELEMENT_NODE && has_attribute_with_entity(child))
            return true;
    return false;
}

bool has_fault_after(xmlTextReader* reader)
{
    int result = 1;
    while (result == 1)
        result = xmlTextReaderNext(reader);
    return result < 0;
}

// A document that a push parser gets in one chunk.
class whole_document_t
{
public:
    whole_document_t(const std::string& document, std::size_t size)
        : m_parser(xmlCreatePushParserCtxt(nullptr, nullptr, nullptr, 0, nullptr),
                   xmlFreeParserCtxt)
    {
        xmlCtxtUseOptions(m_parser.get(), options);
        xmlParseChunk(m_parser.get(), document.data(), static_cast<int>(size), 1);
    }
    ~whole_document_t()
    {
        xmlFreeDoc(m_parser->myDoc);
        m_parser->myDoc = nullptr;
    }
    whole_document_t(const whole_document_t&) = delete;
    whole_document_t& operator=(const whole_document_t&) = delete;

    bool has_instruction_in_document_type() const
    {
        const xmlDtd* const type = xmlGetIntSubset(m_parser->myDoc);
        const xmlNode* at = type != nullptr ? type->children : nullptr;
        while (at != nullptr && at->type != XML_PI_NODE)
            at = at->next;
        return at != nullptr;
    }

    // Returns null after any fault.
    message_ptr_t message() const
    {
        if (m_parser->wellFormed == 0)
            return message_ptr_t();
        const xmlNode* const root = xmlDocGetRootElement(m_parser->myDoc);
        const bool is_readable = is_message(root) && expansion_t::is_within_limit(root);
        return is_readable ? read_element(root) : message_ptr_t();
    }

private:
    parser_t m_parser;
};

bool has_parameter_entity = false;

xmlEntityPtr on_parameter_entity(void* /*parser*/, const xmlChar* /*name*/)
{
    has_parameter_entity = true;
    return nullptr;
}

bool refers_to_parameter_entity(const std::string& document)
{
    if (document.find('%') == std::string::npos || document.find("<!DOCTYPE") == std::string::npos)
        return false;
    const parser_t parser(xmlCreatePushParserCtxt(nullptr, nullptr, nullptr, 0, nullptr),
                          xmlFreeParserCtxt);
    xmlCtxtUseOptions(parser.get(), options);
    parser->sax->getParameterEntity = on_parameter_entity;
    has_parameter_entity = false;
    xmlParseChunk(parser.get(), document.data(), static_cast<int>(document.size()), 1);
    xmlFreeDoc(parser->myDoc);
    parser->myDoc = nullptr;
    return has_parameter_entity;
}

} // namespace

document_oracle_t::document_oracle_t(const std::wstring& text)
    : m_document(ROVA_2_18::strings::utf16_to_utf8(text))
{
    // XML does not allow the character zero, and libxml2 would detect another encoding by it.
    if (text.find(L'\0') != std::wstring::npos)
        return;
    const xml_errors_t errors;
    if (refers_to_parameter_entity(m_document)) {
        m_exception = exception_t::parameter_entity;
        return;
    }
    read();
    if (m_exception == exception_t::none && m_document.size() > max_unlimited_bytes)
        m_exception = exception_t::document_size;
    if (!is_any_result_valid())
        read_whole();
}

bool document_oracle_t::is_any_result_valid() const
{
    return m_exception == exception_t::parameter_entity ||
           m_exception == exception_t::expanded_entities ||
           m_exception == exception_t::attribute_entity;
}

void document_oracle_t::read()
{
    const reader_t reader(xmlReaderForMemory(m_document.data(), static_cast<int>(m_document.size()),
                                             nullptr, "UTF-8", options),
                          xmlFreeTextReader);
    while (reader && xmlTextReaderNext(reader.get()) == 1) {
        const xmlNode* const node = xmlTextReaderExpand(reader.get());
        if (node == nullptr || !is_message(node))
            continue;
        if (!expansion_t::is_within_limit(node)) {
            m_exception = exception_t::expanded_entities;
            return;
        }
        m_message = read_element(node);
        if (normalizes_attribute_entities && has_attribute_with_entity(node)) {
            m_exception = exception_t::attribute_entity;
            return;
        }
        if (has_fault_after(reader.get()))
            m_exception = exception_t::recovered_message;
        return;
    }
}

// A push parser searches for the end of a document type before it parses it. In an instruction it
// takes quotes and brackets for the type's own.
void document_oracle_t::read_whole()
{
    const std::size_t type = m_document.find("<!DOCTYPE");
    if (type == std::string::npos || m_document.find("<?", type) == std::string::npos)
        return;
    const whole_document_t whole(m_document, m_document.size());
    if (!whole.has_instruction_in_document_type())
        return;
    m_exception = exception_t::split_document_type;
    m_whole_message = whole.message();
}

std::string
document_oracle_t::difference(const boost::shared_ptr<velmoext_1_4_8::message_t>& result) const
{
    if (is_any_result_valid() || (!result && m_exception != exception_t::none))
        return std::string();
    const std::string actual = fields_of(result);
    const bool is_valid =
        actual == fields_of(m_message) || (m_whole_message && actual == fields_of(m_whole_message));
    return is_valid ? std::string() : "expected " + fields_of(m_message) + "but read " + actual;
}

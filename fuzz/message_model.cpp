#include "message_model.h"

#include "common_rules.h"
#include "input_text.h"
#include "quiet_xml.h"

#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlreader.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace
{

using velmoext_1_4_8::message_t;

typedef boost::shared_ptr<message_t> message_ptr;
typedef std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> tree_t;
typedef std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser_t;
typedef std::unique_ptr<xmlTextReader, decltype(&xmlFreeTextReader)> reader_t;

const char* const encoding = "UTF-8";
const int options = XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

const std::size_t longest_entities = 10000000;
const std::size_t deepest_entities = 1000;
const std::size_t most_defaults = 200000;

std::string_view view(const xmlChar* text)
{
    return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

std::wstring to_wide(std::string_view text)
{
    return ROVA_2_18::strings::utf8_to_utf16(std::string(text));
}

bool is_message(const xmlNode& node)
{
    return node.type == XML_ELEMENT_NODE && view(node.name) == "msg";
}

// Text with entities written in it, and how much of them.
class resolver_t
{
public:
    std::string text_of(const xmlNode* first)
    {
        std::string text;
        append(first, 0, text);
        return text;
    }

    bool is_beyond_limits() const { return m_is_beyond_limits; }

private:
    void append(const xmlNode* first, std::size_t depth, std::string& text)
    {
        m_is_beyond_limits |= m_length > longest_entities || depth > deepest_entities;
        for (const xmlNode* node = first; node != nullptr && !m_is_beyond_limits; node = node->next)
            append_one(*node, depth, text);
    }

    void append_one(const xmlNode& node, std::size_t depth, std::string& text)
    {
        if (node.type == XML_TEXT_NODE || node.type == XML_CDATA_SECTION_NODE)
            text += view(node.content);
        else if (node.type == XML_ELEMENT_NODE)
            append(node.children, depth + 1, text);
        else if (node.type == XML_ENTITY_REF_NODE)
            append_entity(xmlGetDocEntity(node.doc, node.name), depth, text);
    }

    void append_entity(const xmlEntity* entity, std::size_t depth, std::string& text)
    {
        if (entity == nullptr)
            return;
        m_length += static_cast<std::size_t>(entity->length);
        append(entity->children, depth + 1, text);
    }

    std::size_t m_length = 0;
    bool m_is_beyond_limits = false;
};

class element_t
{
public:
    explicit element_t(const xmlNode& element)
    {
        for (const xmlAttr* at = element.properties; at != nullptr; at = at->next)
            m_content.attributes.emplace(to_wide(view(at->name)),
                                         to_wide(m_resolver.text_of(at->children)));
        for (const xmlNode* child = element.children; child != nullptr; child = child->next)
            if (child->type == XML_ELEMENT_NODE)
                read_child(*child, m_resolver.text_of(child->children));
        m_message.set_content(m_content);
    }

    const message_t& message() const { return m_message; }
    bool is_beyond_limits() const { return m_resolver.is_beyond_limits(); }

private:
    void read_child(const xmlNode& child, const std::string& text)
    {
        const std::string_view name = view(child.name);
        if (name == "type")
            m_message.set_type(to_wide(text));
        else if (name == "severity")
            m_message.set_severity(severity_of(to_wide(text)));
        else if (name == "arg")
            m_content.args.emplace(arg_name(child), to_wide(text));
        else
            m_content.elements.emplace(to_wide(name), to_wide(text));
    }

    std::wstring arg_name(const xmlNode& arg)
    {
        const xmlAttr* at = arg.properties;
        while (at != nullptr && view(at->name) != "name")
            at = at->next;
        std::wstring name;
        if (at != nullptr)
            name = to_wide(m_resolver.text_of(at->children));
        return name.empty() ? L"arg" + std::to_wstring(m_content.next_arg_number++) : name;
    }

    resolver_t m_resolver;
    message_t m_message;
    message_t::message_content_t m_content;
};

bool begins_with_reference(const std::string& behind_percent)
{
    const std::size_t end = behind_percent.find_first_of("; \t\r\n\"'<>");
    return end != 0 && end != std::string::npos && behind_percent[end] == ';';
}

// What looks like a reference counts too, wherever it stands between what could begin a document
// type and what could close it, or the end of all: nobody looks closer.
bool seems_to_refer_to_parameter_entities(const std::string& document)
{
    const std::size_t begin = std::min(document.find("<!DOCTYPE"), document.size());
    const std::size_t end = std::min(document.rfind(']'), document.size());
    const std::string type = document.substr(begin, std::max(begin, end) - begin);
    const std::vector<std::string> parts = split(type, '%');
    return std::any_of(parts.begin() + 1, parts.end(), begins_with_reference);
}

// What lies behind those that are read need not be well-formed.
bool may_have_excess_attributes(const std::string& document)
{
    const auto is_quote = [](char sign) {
        return sign == '"' || sign == '\'';
    };
    const auto quotes = std::count_if(document.begin(), document.end(), is_quote);
    return static_cast<std::size_t>(quotes) > 2 * attributes_read;
}

template <typename Check>
std::size_t count_declared(const xmlDoc* tree, const Check& check)
{
    std::size_t count = 0;
    if (tree != nullptr && tree->intSubset != nullptr)
        for (const xmlNode* at = tree->intSubset->children; at != nullptr; at = at->next)
            count += check(*at) ? 1 : 0;
    return count;
}

bool is_default(const xmlNode& declared)
{
    if (declared.type != XML_ATTRIBUTE_DECL)
        return false;
    const xmlAttributeDefault kind = reinterpret_cast<const xmlAttribute&>(declared).def;
    return kind == XML_ATTRIBUTE_NONE || kind == XML_ATTRIBUTE_FIXED;
}

bool is_remark(const xmlNode& declared)
{
    return declared.type == XML_COMMENT_NODE || declared.type == XML_PI_NODE;
}

// A few bytes of parameter entities can stand for gigabytes.
xmlEntityPtr find_no_entity(void* /*context*/, const xmlChar* /*name*/)
{
    return nullptr;
}

message_ptr read_element(const xmlNode& node, message_model_t& model)
{
    const element_t element(node);
    model.may_be_refused |= element.is_beyond_limits();
    return boost::make_shared<message_t>(element.message());
}

message_ptr read_tree(const xmlDoc& tree, message_model_t& model)
{
    for (const xmlNode* node = tree.children; node != nullptr; node = node->next)
        if (is_message(*node))
            return read_element(*node, model);
    return nullptr;
}

message_ptr read_stepwise(xmlTextReader* reader, message_model_t& model)
{
    while (xmlTextReaderNext(reader) == 1) {
        const xmlNode* const node = xmlTextReaderExpand(reader);
        // What a reader steps to behind a fault need not be topmost.
        if (node == nullptr)
            return nullptr;
        if (is_message(*node))
            return read_element(*node, model);
    }
    return nullptr;
}

// A reader gets a text in pieces. Where it has read another text before, the first of them has
// another size.
void read_in_pieces(const std::string& document, message_model_t& model)
{
    const std::string earlier = "<msg/>";
    const reader_t reader(xmlReaderForMemory(earlier.data(), static_cast<int>(earlier.size()),
                                             nullptr, encoding, options),
                          xmlFreeTextReader);
    read_stepwise(reader.get(), model);
    xmlTextReaderClose(reader.get());
    const auto size = static_cast<int>(document.size());
    xmlReaderNewMemory(reader.get(), document.data(), size, nullptr, encoding, options);
    model.readings.push_back(read_stepwise(reader.get(), model));

    const reader_t fresh(xmlReaderForMemory(document.data(), size, nullptr, encoding, options),
                         xmlFreeTextReader);
    model.readings.push_back(read_stepwise(fresh.get(), model));
}

// What libxml2 brings of a faulty text depends on the pieces in which it gets it. So does what it
// brings of a section of character data, whose line ends it then leaves as they are, and where a
// quote in a remark within the document type passes for the beginning of a literal.
bool depends_on_pieces(const xmlParserCtxt& parser, const xmlDoc* tree, const std::string& document)
{
    return tree == nullptr || parser.wellFormed == 0 || count_declared(tree, is_remark) != 0 ||
           document.find("<![CDATA[") != std::string::npos;
}

} // namespace

message_model_t message_model_t::read(const std::wstring& text)
{
    message_model_t model;
    const std::string document = ROVA_2_18::strings::utf16_to_utf8(text);
    const quiet_xml_t quiet;
    const parser_t parser(xmlNewParserCtxt(), xmlFreeParserCtxt);
    parser->sax->getParameterEntity = find_no_entity;
    // The encoding that a text declares counts, whichever the reader is told.
    const tree_t tree(xmlCtxtReadMemory(parser.get(), document.data(),
                                        static_cast<int>(document.size()), nullptr, nullptr,
                                        options | XML_PARSE_NONET),
                      xmlFreeDoc);
    // No XML holds a zero character, and nobody looks into a foreign encoding.
    if (parser->hasPErefs != 0 || document.find('\0') != std::string::npos ||
        declares_foreign_encoding(document)) {
        model.readings.emplace_back();
        return model;
    }
    model.may_be_refused =
        seems_to_refer_to_parameter_entities(document) || may_have_excess_attributes(document) ||
        count_declared(tree.get(), is_default) * (document.size() / 4) > most_defaults;
    if (model.may_be_refused)
        return model;
    if (depends_on_pieces(*parser, tree.get(), document))
        read_in_pieces(document, model);
    else
        model.readings.push_back(read_tree(*tree, model));
    return model;
}

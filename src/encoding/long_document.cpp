#include "encoding/long_document.h"

#include "encoding/document_reader.h"
#include "encoding/element_names.h"
#include "encoding/message_element.h"
#include "xml/declared_defaults.h"

#include <libxml/SAX2.h>
#include <libxml/dict.h>

#include <algorithm>
#include <cstddef>

namespace velmoext_1_4_8
{
namespace
{

const std::size_t smallest_piece = 512;
const std::size_t largest_piece = 1048576;
// libxml2 gives a text up that has more than 10,000,000 bytes of a tag, a comment or the like.
const std::size_t most_unfinished = 9990000;

// libxml2 looks for each name, and each id, among all of them in a few thousand places.
const int most_names = 200000;

// As much again as there was before: so it looks through what is unfinished a few times at most.
std::size_t next_piece(const xmlParserCtxt& parser, std::size_t parsed)
{
    const auto unfinished = static_cast<std::size_t>(parser.input->end - parser.input->cur);
    const std::size_t room = most_unfinished - std::min(unfinished, most_unfinished);
    return std::max(std::min({parsed, room, largest_piece}), smallest_piece);
}

bool begins_message(const xmlNode* node, std::size_t document_size)
{
    if (!node || !xmlStrEqual(node->name, to_xml(element_names::msg)))
        return false;
    const xmlDtd* const type = node->doc->intSubset;
    return !type ||
           !declares_too_many_defaults(reinterpret_cast<const xmlNode&>(*type), document_size);
}

// The first element decides whether the others are looked at.
void on_start_element(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                      int namespace_count, const xmlChar** namespaces, int attribute_count,
                      int default_count, const xmlChar** attributes)
{
    auto& parser = *static_cast<xmlParserCtxt*>(context);
    const bool is_topmost = !parser.node;
    xmlSAX2StartElementNs(context, name, prefix, uri, namespace_count, namespaces, attribute_count,
                          default_count, attributes);
    if (is_topmost && !begins_message(parser.node, *static_cast<std::size_t*>(parser._private))) {
        parser.wellFormed = 0;
        parser.instate = XML_PARSER_EOF;
    }
}

// Comments and instructions behind the topmost element end what a reader looks at.
bool is_over(const xmlParserCtxt& parser)
{
    const xmlNode* const topmost = xmlDocGetRootElement(parser.myDoc);
    return topmost && topmost->next;
}

bool take(xmlParserCtxt& parser, const char* piece, std::size_t size, bool is_last)
{
    return xmlParseChunk(&parser, piece, static_cast<int>(size), is_last ? 1 : 0) == XML_ERR_OK &&
           parser.wellFormed && xmlDictSize(parser.dict) <= most_names;
}

bool parse(xmlParserCtxt& parser, const std::string& document)
{
    std::size_t parsed = 0;
    while (parsed < document.size() && !is_over(parser)) {
        const std::size_t left = document.size() - parsed;
        const std::size_t size = std::min(next_piece(parser, parsed), left);
        if (!take(parser, &document[parsed], size, size == left))
            return false;
        parsed += size;
    }
    return true;
}

} // namespace

boost::shared_ptr<message_t> read_long_document(const std::string& document)
{
    const xml_parser_t parser(xmlCreatePushParserCtxt(nullptr, nullptr, nullptr, 0, nullptr));
    if (!parser ||
        xmlCtxtResetPush(parser.get(), nullptr, 0, nullptr, document_reader_t::encoding) != 0)
        return boost::shared_ptr<message_t>();
    xmlCtxtUseOptions(parser.get(), document_reader_t::options);
    std::size_t document_size = document.size();
    parser->_private = &document_size;
    parser->sax->startElementNs = on_start_element;
    if (!parse(*parser, document))
        return boost::shared_ptr<message_t>();
    return read_message_element(xmlDocGetRootElement(parser->myDoc));
}

} // namespace velmoext_1_4_8

#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlwriter.h>

#include <memory>

namespace velmoext_1_4_8
{

/// Frees libxml2's objects, each type with its own function.
struct xml_deleter_t
{
    void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
    void operator()(xmlTextWriter* writer) const { xmlFreeTextWriter(writer); }
    void operator()(xmlChar* text) const { xmlFree(text); }

    /// Frees the document that the parser built, too.
    void operator()(xmlParserCtxt* parser) const
    {
        xmlFreeDoc(parser->myDoc);
        xmlFreeParserCtxt(parser);
    }
};

typedef std::unique_ptr<xmlParserCtxt, xml_deleter_t> xml_parser_t;
typedef std::unique_ptr<xmlBuffer, xml_deleter_t> xml_buffer_t;
typedef std::unique_ptr<xmlTextWriter, xml_deleter_t> xml_writer_t;
typedef std::unique_ptr<xmlChar, xml_deleter_t> xml_string_t;

inline const xmlChar* to_xml(const char* text)
{
    return reinterpret_cast<const xmlChar*>(text);
}

inline const char* from_xml(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

} // namespace velmoext_1_4_8

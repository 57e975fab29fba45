#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlreader.h>
#include <libxml/xmlwriter.h>

#include <memory>

namespace velmoext_1_4_8
{

/// Frees what libxml2 made, each type with its own function.
struct xml_deleter_t
{
    void operator()(xmlBuffer* buffer) const { xmlBufferFree(buffer); }
    void operator()(xmlTextWriter* writer) const { xmlFreeTextWriter(writer); }
    void operator()(xmlTextReader* reader) const { xmlFreeTextReader(reader); }
    void operator()(xmlDict* dictionary) const { xmlDictFree(dictionary); }
};

/// A parser and the document that it began, which a table without tree building leaves empty.
struct xml_parser_deleter_t
{
    void operator()(xmlParserCtxt* parser) const
    {
        xmlFreeDoc(parser->myDoc);
        xmlFreeParserCtxt(parser);
    }
};

typedef std::unique_ptr<xmlParserCtxt, xml_parser_deleter_t> xml_parser_t;
typedef std::unique_ptr<xmlBuffer, xml_deleter_t> xml_buffer_t;
typedef std::unique_ptr<xmlTextWriter, xml_deleter_t> xml_writer_t;
typedef std::unique_ptr<xmlTextReader, xml_deleter_t> xml_reader_t;
typedef std::unique_ptr<xmlDict, xml_deleter_t> xml_dictionary_t;

} // namespace velmoext_1_4_8

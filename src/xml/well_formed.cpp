#include "xml/well_formed.h"

#include "xml/cost.h"
#include "xml/error_scope.h"
#include "xml/handles.h"
#include "xml/library.h"

#include <libxml/parserInternals.h>

#include <new>

namespace velmoext_1_4_8
{
namespace
{

const int options =
    XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET | XML_PARSE_IGNORE_ENC;

bool is_within_limits(const std::string& document)
{
    return document.size() <= limits::max_document_bytes &&
           inspect_markup(document, parse_t::tree).refusal == refusal_t::none;
}

} // namespace

bool is_well_formed(const std::string& document)
{
    if (!is_within_limits(document))
        return false;
    initialize_xml_library();
    const xml_error_scope_t errors;
    const xml_parser_t parser(
        xmlCreateMemoryParserCtxt(document.data(), static_cast<int>(document.size())));
    if (parser) {
        xmlCtxtUseOptions(parser.get(), options);
        xmlParseDocument(parser.get());
    }
    if (!parser || errors.has_run_out_of_memory())
        throw std::bad_alloc();
    return parser->wellFormed != 0;
}

} // namespace velmoext_1_4_8

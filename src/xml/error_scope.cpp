#include "xml/error_scope.h"

#include "encoding/element_names.h"

#include <libxml/globals.h>
#include <libxml/parser.h>

#include <cstring>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

// Of a name whose prefix nobody declared libxml2 looks up the whole next, and takes it without its
// prefix where its dictionary has no memory for it. Looked up here, it is there then. Warnings of
// that kind are about elements that an entity brings along, and have no name to look up.
bool has_room_for_name(const xmlError& error)
{
    if (error.level < XML_ERR_ERROR)
        return true;
    const auto* const parser = static_cast<const xmlParserCtxt*>(error.ctxt);
    return error.str1 && error.str2 &&
           (!parser || xmlDictQLookup(parser->dict, to_xml(error.str1), to_xml(error.str2)));
}

} // namespace

xml_error_scope_t::xml_error_scope_t()
    : m_generic_place(&xmlGenericError), m_generic_context_place(&xmlGenericErrorContext),
      m_structured_place(&xmlStructuredError),
      m_structured_context_place(&xmlStructuredErrorContext), m_last_error_place(&xmlLastError)
{
    begin();
}

xml_error_scope_t::~xml_error_scope_t()
{
    end();
    xmlResetError(&m_last_error);
}

xml_error_scope_t::pause_t::pause_t(xml_error_scope_t& silence) : m_silence(silence)
{
    m_silence.end();
}

xml_error_scope_t::pause_t::~pause_t()
{
    m_silence.begin();
}

// libxml2's own type asks for a function of C's variable arguments. Lists, among others, know no
// other way to tell that they have no memory.
// NOLINTNEXTLINE(cert-dcl50-cpp)
void xml_error_scope_t::hear_text(void* silence, const char* format, ...)
{
    if (!std::strstr(format, "memory") && !std::strstr(format, "lloc failed"))
        return;
    auto& self = *static_cast<xml_error_scope_t*>(silence);
    self.m_has_lacked_memory = true;
    ++self.m_hidden_losses;
}

void xml_error_scope_t::hear_error(void* silence, xmlErrorPtr error)
{
    static_cast<xml_error_scope_t*>(silence)->hear(*error);
}

void xml_error_scope_t::hear(const xmlError& error)
{
    if (error.code == XML_ERR_NO_MEMORY)
        m_has_lacked_memory = true;
    if (error.code == XML_NS_ERR_UNDEFINED_NAMESPACE && !has_room_for_name(error))
        m_has_lacked_memory = true;
    // xmlStopParser() would free the text, which libxml2 still looks at behind some faults.
    const bool is_fault = error.domain == XML_FROM_PARSER && error.level == XML_ERR_FATAL;
    if (is_fault && error.ctxt)
        static_cast<xmlParserCtxt*>(error.ctxt)->instate = XML_PARSER_EOF;
}

void xml_error_scope_t::begin()
{
    m_generic = std::exchange(*m_generic_place, hear_text);
    m_generic_context = std::exchange(*m_generic_context_place, this);
    m_structured = std::exchange(*m_structured_place, hear_error);
    m_structured_context = std::exchange(*m_structured_context_place, this);
    swap_last_error();
}

void xml_error_scope_t::end()
{
    *m_generic_place = m_generic;
    *m_generic_context_place = m_generic_context;
    *m_structured_place = m_structured;
    *m_structured_context_place = m_structured_context;
    swap_last_error();
}

// Nearly always there is none on either side.
void xml_error_scope_t::swap_last_error()
{
    if (m_last_error.code != XML_ERR_OK || m_last_error_place->code != XML_ERR_OK)
        std::swap(m_last_error, *m_last_error_place);
}

} // namespace velmoext_1_4_8

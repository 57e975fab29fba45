#include "xml/error_scope.h"

#include "xml/handles.h"

#include <libxml/dict.h>
#include <libxml/globals.h>

#include <cstring>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

// If the prefix of a name is not declared, libxml2 looks up the whole name next, and takes it
// without its prefix when its dictionary runs out of memory. Looked up here, it is found then.
// Warnings of that kind are about elements of an entity, and have no name to look up.
bool can_look_up_name(const xmlError& error)
{
    if (error.level < XML_ERR_ERROR)
        return true;
    const auto* const parser = static_cast<const xmlParserCtxt*>(error.ctxt);
    return error.str1 && error.str2 &&
           (!parser || xmlDictQLookup(parser->dict, to_xml(error.str1), to_xml(error.str2)));
}

// libxml2 before 2.14 reports a text beyond its limit like a lack of memory.
bool is_lack_of_memory(const xmlError& error)
{
    return error.code == XML_ERR_NO_MEMORY &&
           !(error.message && std::strstr(error.message, "huge text node"));
}

} // namespace

xml_error_scope_t::xml_error_scope_t()
{
    enter();
}

xml_error_scope_t::~xml_error_scope_t()
{
    leave();
}

xml_error_scope_t::pause_t::pause_t(xml_error_scope_t& scope) : m_scope(scope)
{
    m_scope.leave();
}

xml_error_scope_t::pause_t::~pause_t()
{
    m_scope.enter();
}

// libxml2's own type asks for a function of C's variable arguments. Its lists, among others, report
// in no other way that they ran out of memory.
// NOLINTNEXTLINE(cert-dcl50-cpp)
void xml_error_scope_t::on_text(void* scope, const char* format, ...)
{
    if (std::strstr(format, "memory") || std::strstr(format, "lloc failed"))
        static_cast<xml_error_scope_t*>(scope)->m_has_run_out_of_memory = true;
}

void xml_error_scope_t::on_error(void* scope, xml_error_ptr_t error)
{
    if (is_lack_of_memory(*error) ||
        (error->code == XML_NS_ERR_UNDEFINED_NAMESPACE && !can_look_up_name(*error)))
        static_cast<xml_error_scope_t*>(scope)->m_has_run_out_of_memory = true;
}

void xml_error_scope_t::enter()
{
    m_generic = xmlGenericError;
    m_generic_context = xmlGenericErrorContext;
    m_structured = xmlStructuredError;
    m_structured_context = xmlStructuredErrorContext;
    xmlSetGenericErrorFunc(this, on_text);
    xmlSetStructuredErrorFunc(this, on_error);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    m_mutable_last_error = const_cast<xmlError*>(xmlGetLastError());
    if (m_mutable_last_error)
        std::swap(m_last_error, *m_mutable_last_error);
}

// Moves the thread's last error, since a copy could run out of memory. No function of libxml2 sets
// it, and newer releases return its address as const.
void xml_error_scope_t::leave()
{
    if (xmlGetLastError())
        xmlResetLastError();
    if (m_mutable_last_error)
        std::swap(m_last_error, *m_mutable_last_error);
    xmlSetGenericErrorFunc(m_generic_context, m_generic);
    xmlSetStructuredErrorFunc(m_structured_context, m_structured);
}

} // namespace velmoext_1_4_8

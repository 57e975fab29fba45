#include "xml_silence.h"

#include <libxml/globals.h>

namespace velmoext_1_4_8
{
namespace
{

// libxml2's own type asks for a function of C's variable arguments.
void ignore_text(void* /*context*/, const char* /*format*/, ...) {} // NOLINT(cert-dcl50-cpp)

} // namespace

xml_silence_t::xml_silence_t()
{
    begin();
}

xml_silence_t::~xml_silence_t()
{
    end();
}

xml_silence_t::pause_t::pause_t(xml_silence_t& silence) : m_silence(silence)
{
    m_silence.end();
}

xml_silence_t::pause_t::~pause_t()
{
    m_silence.begin();
}

void xml_silence_t::hear_error(void* silence, xmlErrorPtr error)
{
    if (error->code == XML_ERR_NO_MEMORY)
        static_cast<xml_silence_t*>(silence)->m_has_lacked_memory = true;
}

void xml_silence_t::begin()
{
    m_generic = xmlGenericError;
    m_generic_context = xmlGenericErrorContext;
    m_structured = xmlStructuredError;
    m_structured_context = xmlStructuredErrorContext;
    xmlSetGenericErrorFunc(nullptr, ignore_text);
    xmlSetStructuredErrorFunc(this, hear_error);
}

void xml_silence_t::end()
{
    xmlSetGenericErrorFunc(m_generic_context, m_generic);
    xmlSetStructuredErrorFunc(m_structured_context, m_structured);
}

} // namespace velmoext_1_4_8

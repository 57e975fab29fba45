#pragma once

#include <libxml/globals.h>
#include <libxml/xmlerror.h>

/// Keeps a model's own use of libxml2 from printing, as long as it lives.
class quiet_xml_t
{
public:
    quiet_xml_t()
    {
        xmlSetGenericErrorFunc(nullptr, ignore);
        xmlSetStructuredErrorFunc(nullptr, ignore_structured);
    }
    ~quiet_xml_t()
    {
        xmlSetStructuredErrorFunc(m_structured_context, m_structured);
        xmlSetGenericErrorFunc(m_generic_context, m_generic);
    }
    quiet_xml_t(const quiet_xml_t&) = delete;
    quiet_xml_t& operator=(const quiet_xml_t&) = delete;

private:
    // libxml2's own type asks for a function of C's variable arguments.
    static void ignore(void* /*context*/, const char* /*format*/, ...) {} // NOLINT(cert-dcl50-cpp)
    static void ignore_structured(void* /*context*/, xmlErrorPtr /*error*/) {}

    xmlGenericErrorFunc m_generic = xmlGenericError;
    void* m_generic_context = xmlGenericErrorContext;
    xmlStructuredErrorFunc m_structured = xmlStructuredError;
    void* m_structured_context = xmlStructuredErrorContext;
};

/// From now on the process ends where libxml2 prints anything: the product never lets it.
void forbid_xml_output();

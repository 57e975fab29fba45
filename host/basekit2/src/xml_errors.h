#pragma once

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <utility>

namespace basekit2
{

/// Ends a parse. xmlStopParser() would free the text, which libxml2 still looks at behind some
/// errors.
inline void stop_parser(xmlParserCtxt& parser)
{
    parser.instate = XML_PARSER_EOF;
    parser.disableSAX = 1;
}

/// Takes libxml2's errors on this thread as long as it lives, so that none is printed or told to
/// the host, and then leaves the thread as it was. Other threads keep their handlers. A parser of
/// this thread is stopped by its first error.
class xml_errors_t
{
public:
    xml_errors_t()
        : m_last_error(std::exchange(xmlLastError, xmlError())), m_generic(xmlGenericError),
          m_generic_context(xmlGenericErrorContext), m_structured(xmlStructuredError),
          m_structured_context(xmlStructuredErrorContext)
    {
        xmlSetGenericErrorFunc(nullptr, ignore);
        xmlSetStructuredErrorFunc(this, take);
    }
    ~xml_errors_t()
    {
        xmlSetGenericErrorFunc(m_generic_context, m_generic);
        xmlSetStructuredErrorFunc(m_structured_context, m_structured);
        xmlResetLastError();
        xmlLastError = m_last_error;
    }
    xml_errors_t(const xml_errors_t&) = delete;
    xml_errors_t& operator=(const xml_errors_t&) = delete;

    /// Whether there was more than a warning. What breaks only the rules of namespaces does not
    /// count: names with a colon are names like any other.
    bool has_failed() const { return m_has_failed; }

    /// Whether it was memory that was missing.
    bool has_lacked_memory() const { return m_has_lacked_memory; }

private:
    // libxml2's own type asks for a function of C's variable arguments.
    static void ignore(void* /*context*/, const char* /*format*/, ...) {} // NOLINT(cert-dcl50-cpp)
    static void take(void* errors, xmlErrorPtr error)
    {
        if (error->level < XML_ERR_ERROR || error->domain == XML_FROM_NAMESPACE)
            return;
        auto& self = *static_cast<xml_errors_t*>(errors);
        self.m_has_failed = true;
        self.m_has_lacked_memory = self.m_has_lacked_memory || error->code == XML_ERR_NO_MEMORY;
        stop(*error);
    }
    // Else libxml2 reads on to the end, and compares each repeat of an attribute with all that the
    // tag has. In these domains the context is a parser, in others something else.
    static void stop(const xmlError& error)
    {
        const bool is_of_parser = error.domain == XML_FROM_PARSER || error.domain == XML_FROM_IO;
        if (is_of_parser && error.ctxt != nullptr)
            stop_parser(*static_cast<xmlParserCtxt*>(error.ctxt));
    }

    bool m_has_failed = false;
    bool m_has_lacked_memory = false;
    xmlError m_last_error;
    xmlGenericErrorFunc m_generic;
    void* m_generic_context;
    xmlStructuredErrorFunc m_structured;
    void* m_structured_context;
};

} // namespace basekit2

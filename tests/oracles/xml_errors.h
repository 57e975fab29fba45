#pragma once

#include <libxml/xmlerror.h>

/// Receives libxml2's errors on this thread while in scope, so that none is printed. Leaves the
/// thread without a handler of structured errors.
class xml_errors_t
{
public:
    xml_errors_t() { xmlSetStructuredErrorFunc(this, on_error); }
    ~xml_errors_t() { xmlSetStructuredErrorFunc(nullptr, nullptr); }
    xml_errors_t(const xml_errors_t&) = delete;
    xml_errors_t& operator=(const xml_errors_t&) = delete;

    /// The code of the parser's first fatal error, XML_ERR_OK without one. What a converter of
    /// encodings cannot convert does not end a parse at once: it is converted ahead.
    int first_fault() const { return m_first_fault; }
    bool has_fault() const { return m_first_fault != XML_ERR_OK; }

private:
#if LIBXML_VERSION >= 21200
    typedef const xmlError* error_ptr_t;
#else
    typedef xmlErrorPtr error_ptr_t;
#endif

    static void on_error(void* errors, error_ptr_t error)
    {
        auto& self = *static_cast<xml_errors_t*>(errors);
        if (error->domain == XML_FROM_PARSER && error->level == XML_ERR_FATAL && !self.has_fault())
            self.m_first_fault = error->code;
    }

    int m_first_fault = XML_ERR_OK;
};

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

    /// Whether a parser reported a fatal error. A failed conversion of the encoding does not count,
    /// since the text is converted before the parse.
    bool has_fault() const { return m_has_fault; }

private:
#if LIBXML_VERSION >= 21200
    typedef const xmlError* error_ptr_t;
#else
    typedef xmlErrorPtr error_ptr_t;
#endif

    static void on_error(void* errors, error_ptr_t error)
    {
        auto& self = *static_cast<xml_errors_t*>(errors);
        if (error->domain == XML_FROM_PARSER && error->level == XML_ERR_FATAL)
            self.m_has_fault = true;
    }

    bool m_has_fault = false;
};

#pragma once

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <cstddef>

// The only file of this library that depends on libxml2's release.
namespace basekit2
{

/// Parameter type of a structured error handler; const since 2.12.
#if LIBXML_VERSION >= 21200
typedef const xmlError xml_error_t;
#else
typedef xmlError xml_error_t;
#endif

/// Returns the dictionary of the names that the parser has read.
inline xmlDict* dictionary_of(xmlParserCtxt& parser)
{
#if LIBXML_VERSION >= 21400
    return xmlCtxtGetDict(&parser);
#else
    return parser.dict;
#endif
}

/// Returns whether the parser has read all `size` bytes of a well-formed document. Before 2.14, it
/// stops without an error at a zero character, or at malformed bytes, after the root.
inline bool is_used_up([[maybe_unused]] xmlParserCtxt& parser, [[maybe_unused]] std::size_t size)
{
#if LIBXML_VERSION >= 21400
    return true;
#else
    return xmlByteConsumed(&parser) == static_cast<long>(size);
#endif
}

/// Returns the thread's last error, null if there is none. libxml2 has no function that restores
/// it, so callers write to the object.
inline xmlError* mutable_last_error()
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    return const_cast<xmlError*>(xmlGetLastError());
}

/// Captures libxml2's errors on this thread while in scope, and restores the thread's handlers and
/// last error. Nothing is printed or reported to the host. Other threads keep their handlers.
class xml_errors_t
{
public:
    xml_errors_t()
        : m_generic(xmlGenericError), m_generic_context(xmlGenericErrorContext),
          m_structured(xmlStructuredError), m_structured_context(xmlStructuredErrorContext),
          m_mutable_last_error(mutable_last_error())
    {
        if (m_mutable_last_error != nullptr) {
            m_last_error = *m_mutable_last_error;
            *m_mutable_last_error = xmlError();
        }
        xmlSetGenericErrorFunc(nullptr, ignore);
        xmlSetStructuredErrorFunc(this, take);
    }
    ~xml_errors_t()
    {
        xmlSetGenericErrorFunc(m_generic_context, m_generic);
        xmlSetStructuredErrorFunc(m_structured_context, m_structured);
        xmlResetLastError();
        if (m_mutable_last_error != nullptr)
            *m_mutable_last_error = m_last_error;
    }
    xml_errors_t(const xml_errors_t&) = delete;
    xml_errors_t& operator=(const xml_errors_t&) = delete;

    /// Returns whether there was an error. Errors about namespaces do not count: names
    /// with a colon are names like any other.
    bool has_failed() const { return m_has_failed; }

    /// Returns whether the first error is that libxml2 ran out of memory. Later ones may follow
    /// from the first.
    bool has_run_out_of_memory() const { return m_has_run_out_of_memory; }

private:
    // The type is libxml2's.
    static void ignore(void* /*context*/, const char* /*format*/, ...) {} // NOLINT(cert-dcl50-cpp)
    static void take(void* errors, xml_error_t* error)
    {
        if (error->level < XML_ERR_ERROR || error->domain == XML_FROM_NAMESPACE)
            return;
        auto& self = *static_cast<xml_errors_t*>(errors);
        if (!self.m_has_failed)
            self.m_has_run_out_of_memory = error->code == XML_ERR_NO_MEMORY;
        self.m_has_failed = true;
    }

    bool m_has_failed = false;
    bool m_has_run_out_of_memory = false;
    xmlGenericErrorFunc m_generic;
    void* m_generic_context;
    xmlStructuredErrorFunc m_structured;
    void* m_structured_context;
    /// Null if the thread had no error. The error is moved aside, since a deep copy could fail.
    xmlError* m_mutable_last_error;
    xmlError m_last_error = {};
};

} // namespace basekit2

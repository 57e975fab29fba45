#pragma once

#include <libxml/xmlerror.h>
#include <libxml/xmlversion.h>

namespace velmoext_1_4_8
{

#if LIBXML_VERSION >= 21200
typedef const xmlError* xml_error_ptr_t;
#else
typedef xmlError* xml_error_ptr_t;
#endif

/// Captures libxml2's errors on this thread while in scope, so that none is printed, and restores
/// the thread's handlers and last error. Other threads keep theirs.
///
/// libxml2 reports some errors to the thread's handlers, whatever options and handlers a parser has
/// of its own.
class xml_error_scope_t
{
public:
    xml_error_scope_t();
    ~xml_error_scope_t();
    xml_error_scope_t(const xml_error_scope_t&) = delete;
    xml_error_scope_t& operator=(const xml_error_scope_t&) = delete;

    /// Returns whether libxml2 reported that it ran out of memory.
    bool has_run_out_of_memory() const { return m_has_run_out_of_memory; }

    /// Restores the thread's own handlers and last error while other code runs there.
    class pause_t
    {
    public:
        explicit pause_t(xml_error_scope_t& scope);
        ~pause_t();
        pause_t(const pause_t&) = delete;
        pause_t& operator=(const pause_t&) = delete;

    private:
        xml_error_scope_t& m_scope;
    };

private:
    static void on_text(void* scope, const char* format, ...);
    static void on_error(void* scope, xml_error_ptr_t error);

    void enter();
    void leave();

    bool m_has_run_out_of_memory = false;

    // The thread's own handlers and last error.
    xmlGenericErrorFunc m_generic = nullptr;
    void* m_generic_context = nullptr;
    xmlStructuredErrorFunc m_structured = nullptr;
    void* m_structured_context = nullptr;
    xmlError m_last_error = {};
    xmlError* m_mutable_last_error = nullptr; ///< null when there was no last error
};

} // namespace velmoext_1_4_8

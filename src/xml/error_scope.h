#pragma once

#include <libxml/xmlerror.h>

namespace velmoext_1_4_8
{

/// Keeps libxml2 from printing on this thread as long as it lives, and then leaves the thread's
/// last error as it was. Some of its errors go to the thread's handlers, whatever options and
/// handlers a parse has of its own; other threads keep theirs.
///
/// A parse that fails meanwhile ends, though not within a comment: nothing behind the fault counts,
/// and libxml2 can take the square of it.
class xml_error_scope_t
{
public:
    xml_error_scope_t();
    ~xml_error_scope_t();
    xml_error_scope_t(const xml_error_scope_t&) = delete;
    xml_error_scope_t& operator=(const xml_error_scope_t&) = delete;

    /// Whether libxml2 told meanwhile that it has no memory.
    bool has_lacked_memory() const { return m_has_lacked_memory; }

    /// How often it told so in a text alone, and then answered as if all were well.
    int hidden_losses() const { return m_hidden_losses; }

    /// Gives the thread its own handlers and last error back, as long as it lives, while other code
    /// runs there.
    class pause_t
    {
    public:
        explicit pause_t(xml_error_scope_t& silence);
        ~pause_t();
        pause_t(const pause_t&) = delete;
        pause_t& operator=(const pause_t&) = delete;

    private:
        xml_error_scope_t& m_silence;
    };

private:
    static void hear_text(void* silence, const char* format, ...);
    static void hear_error(void* silence, xmlErrorPtr error);

    void hear(const xmlError& error);
    void begin();
    void end();
    void swap_last_error();

    bool m_has_lacked_memory = false;
    int m_hidden_losses = 0;

    // The thread's own handlers and last error, and where libxml2 has them: it looks for that place
    // at each call.
    xmlGenericErrorFunc* const m_generic_place;
    void** const m_generic_context_place;
    xmlStructuredErrorFunc* const m_structured_place;
    void** const m_structured_context_place;
    xmlError* const m_last_error_place;
    xmlGenericErrorFunc m_generic = nullptr;
    void* m_generic_context = nullptr;
    xmlStructuredErrorFunc m_structured = nullptr;
    void* m_structured_context = nullptr;
    xmlError m_last_error = {};
};

} // namespace velmoext_1_4_8

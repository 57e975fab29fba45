#include "xml/library.h"

#include "xml/error_scope.h"

#include <libxml/parser.h>

#include <cstddef>
#include <new>

namespace velmoext_1_4_8
{
namespace
{

// More than libxml2 and the C library allocate.
const std::size_t thread_bytes = 4096;

// Both keep something for each thread from its first use on, and end the process when that cannot
// be allocated. Allocated and freed here, it is there for them.
void require_memory_for_thread()
{
    ::operator delete(::operator new(thread_bytes));
}

} // namespace

void initialize_xml_library()
{
    thread_local bool is_ready = false;
    if (is_ready)
        return;
    require_memory_for_thread();
    static const bool is_initialized = (xmlInitParser(), true);
    static_cast<void>(is_initialized);
    // libxml2 creates this thread's data here.
    const xml_error_scope_t errors;
    is_ready = true;
}

} // namespace velmoext_1_4_8

#include "xml/library.h"

#include "xml/error_scope.h"

#include <libxml/parser.h>

#include <cstddef>
#include <new>

namespace velmoext_1_4_8
{
namespace
{

// More than libxml2 and the C library ask for.
const std::size_t thread_bytes = 4096;

// Both keep something of each thread from its first use on, and end the process where there is no
// memory for that. Asked for here, its lack is told, and what is given back is there for them.
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
    // Has libxml2 make what it keeps of this thread.
    const xml_error_scope_t silence;
    is_ready = true;
}

} // namespace velmoext_1_4_8

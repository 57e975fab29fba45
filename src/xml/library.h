#pragma once

namespace velmoext_1_4_8
{

/// Initializes libxml2 for the process and for this thread. Requires to be called before anything
/// else of libxml2: libxml2 would do it by itself, but not safely in two threads at once. Throws
/// std::bad_alloc on allocation failure.
void initialize_xml_library();

} // namespace velmoext_1_4_8

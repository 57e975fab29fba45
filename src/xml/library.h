#pragma once

namespace velmoext_1_4_8
{

/// Sets libxml2 up where nobody has yet; to be called before anything else of it, and before what
/// is kept for each thread. libxml2 would do so by itself, but not safely in two threads at once.
/// Throws std::bad_alloc where the thread has no memory to begin with.
void initialize_xml_library();

} // namespace velmoext_1_4_8

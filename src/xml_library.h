#pragma once

namespace velmoext_1_4_8
{

/// Sets libxml2 up where nobody has yet; to be called before anything else of it. libxml2 would do
/// so by itself, but not safely in two threads at once.
void initialize_xml_library();

} // namespace velmoext_1_4_8

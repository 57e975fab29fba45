#pragma once

#include <string>

namespace velmoext_1_4_8
{

/// Returns whether libxml2 finds a document in UTF-8 well-formed, within the limits. Ignores the
/// declared encoding, and opens no file. Throws std::bad_alloc if libxml2 runs out of memory.
bool is_well_formed(const std::string& document);

} // namespace velmoext_1_4_8

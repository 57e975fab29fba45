#pragma once

#include <string>

namespace velmolint
{

/// Returns the charset that the header of a catalog names, empty if there is none. Takes the header
/// as it is in a `.po` file too, with its quotation marks and escapes.
std::string find_charset(const std::string& header);

/// Returns the language that the header of a catalog names, empty if there is none.
std::string find_language(const std::string& header);

} // namespace velmolint

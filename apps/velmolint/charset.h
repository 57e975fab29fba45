#pragma once

#include "finding.h"

#include <optional>
#include <string>

namespace velmolint
{

/// Returns the charset that the header of a catalog names, empty if there is none.
std::string find_charset(const std::string& header);

/// Converts a catalog to UTF-8, bytes that are UTF-8 unchanged. Returns none, with a finding at the
/// header, if the charset is empty or unknown to ICU, or if the text is not in that charset.
std::optional<std::string> to_utf8(const std::string& bytes, const std::string& charset,
                                   const location_t& header, findings_t& findings);

} // namespace velmolint

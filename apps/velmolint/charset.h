#pragma once

#include "finding.h"

#include <optional>
#include <string>

namespace velmolint
{

/// Converts a catalog to UTF-8, bytes that are UTF-8 unchanged. Returns none, with a finding at the
/// header, if the charset is empty or unknown to ICU, or if the text is not in that charset. Names
/// the line of malformed bytes if the line of the header is known.
std::optional<std::string> to_utf8(const std::string& bytes, const std::string& charset,
                                   const location_t& header, findings_t& findings);

} // namespace velmolint

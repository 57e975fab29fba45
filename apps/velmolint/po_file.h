#pragma once

#include "catalog.h"
#include "finding.h"

#include <optional>
#include <string>

namespace velmolint
{

/// Reads the bytes of a `.po` file with gettext's library. Returns none, with findings, if msgfmt
/// would not compile it or if the library could not use the result.
std::optional<catalog_content_t> read_po(const std::string& file, const std::string& bytes,
                                         findings_t& findings);

} // namespace velmolint

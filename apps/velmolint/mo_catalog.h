#pragma once

#include "catalog.h"
#include "finding.h"

#include <optional>
#include <string>

namespace velmolint
{

/// Reads the bytes of a `.mo` file as the library does. Returns none, with a finding, if the
/// library could not use it.
std::optional<catalog_content_t> read_mo(const std::string& file, const std::string& bytes,
                                         findings_t& findings);

} // namespace velmolint

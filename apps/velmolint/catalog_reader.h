#pragma once

#include "catalog.h"
#include "finding.h"

#include <filesystem>

namespace velmolint
{

/// Reads a `.po` or `.mo` file. Completes the name's language with that of the header. If the file
/// cannot be used, adds findings and returns a catalog that is not readable.
catalog_t read_catalog(const std::filesystem::path& file, const catalog_name_t& name,
                       findings_t& findings);

} // namespace velmolint

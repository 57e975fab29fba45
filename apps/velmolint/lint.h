#pragma once

#include "coverage.h"
#include "finding.h"

#include <optional>
#include <string>
#include <vector>

namespace velmolint
{

struct selection_t
{
    std::optional<std::string> source; ///< all sources if not set
    std::optional<std::string> prefix; ///< all prefixes if not set
    std::string config_directory;
    std::vector<std::string> catalogs; ///< files and directories
};

struct result_t
{
    findings_t findings;
    coverage_t coverage;
};

/// Checks the configuration files and catalogs of the selection. Throws usage_error_t if a
/// directory or a file of the selection is missing.
result_t lint(const selection_t& selection);

} // namespace velmolint

#pragma once

#include "lint.h"

#include <iosfwd>

namespace velmolint
{

/// Writes a line per finding, and a table of the coverage.
void write_text(std::ostream& stream, const result_t& result);

/// Writes one document with the findings and the coverage.
void write_json(std::ostream& stream, const result_t& result);

/// Writes a workflow command of GitHub per finding.
void write_github(std::ostream& stream, const result_t& result);

} // namespace velmolint

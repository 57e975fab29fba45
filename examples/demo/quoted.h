/// @file
#pragma once

#include <string>

namespace audit
{

/// Returns an argument for an error message: in quotation marks, safe on a terminal, on one line.
std::string quoted(const std::string& argument);

} // namespace audit

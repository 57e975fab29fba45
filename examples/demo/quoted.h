/// @file
#pragma once

#include <string>

namespace audit
{

/// An argument as a complaint names it: in quotation marks, safe on a terminal, on one line.
std::string quoted(const std::string& argument);

} // namespace audit

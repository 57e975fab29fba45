/// @file
#pragma once

#include <string>
#include <system_error>

namespace audit
{

/// Returns the system's name for an error, for example EACCES. Returns its number if it has no
/// name. The name needs no translation: the receiver can word it in any language.
std::wstring error_name(const std::error_code& error);

} // namespace audit

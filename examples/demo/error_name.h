/// @file
#pragma once

#include <string>
#include <system_error>

namespace audit
{

/// The system's name for an error, as in EACCES; its number where it has none. The words for it are
/// left to the one who reads the message, in whichever language.
std::wstring error_name(const std::error_code& error);

} // namespace audit

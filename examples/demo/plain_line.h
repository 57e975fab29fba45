/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/message.h>

#include <string>

namespace audit
{

/// Returns a message untranslated: severity, type, source, and each argument as name=value, in
/// UTF-8. A part that is empty or has a space or an equals character in it is quoted.
std::string plain_line(const velmoext::message_t& message);

} // namespace audit

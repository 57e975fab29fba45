/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/message.h>

#include <string>

namespace audit
{

/// A message as it is: severity, type, source, and each argument as name=value, in UTF-8. What is
/// empty or has a space or an equals sign in it stands in quotation marks.
std::string plain_line(const velmoext::message_t& message);

} // namespace audit

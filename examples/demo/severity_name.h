/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/message.h>

#include <optional>
#include <string>

namespace audit
{

/// Returns the word for a severity. Returns its number if it has no word.
std::string severity_name(velmoext::message_t::severity_t severity);

/// Returns the severity of that name. Returns nothing for any other word.
std::optional<velmoext::message_t::severity_t> named_severity(const std::string& name);

} // namespace audit

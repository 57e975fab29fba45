/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/message.h>

#include <optional>
#include <string>

namespace audit
{

/// The word for a severity; a severity that has none is its number.
std::string severity_name(velmoext::message_t::severity_t severity);

/// The severity that a user may name, nothing for another word.
std::optional<velmoext::message_t::severity_t> named_severity(const std::string& name);

} // namespace audit

/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/message.h>
#include <velmoext1/velmo_ex.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace audit
{

/// Returns a message in the user's language: severity, title and text, in UTF-8. Returns
/// plain_line() if the catalogs have no text for it.
std::string readable_line(const boost::shared_ptr<velmoext::velmo_ex_t>& ex,
                          const boost::shared_ptr<velmoext::message_t>& message);

} // namespace audit

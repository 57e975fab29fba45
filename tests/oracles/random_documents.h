#pragma once

#include "random_source.h"

#include <string>

/// The bytes of a document that may hold a message, mostly well-formed: of the form that a message
/// is written in, or of any that XML allows.
std::string random_document(random_source_t& random);

/// The same of a log.
std::string random_log(random_source_t& random);

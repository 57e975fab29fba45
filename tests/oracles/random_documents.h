#pragma once

#include "random_source.h"

#include <string>

/// Returns a document that may contain a message, mostly well-formed. It is in the written form, or
/// in any form that XML allows.
std::string random_document(random_source_t& random);

/// Returns such a log.
std::string random_log(random_source_t& random);

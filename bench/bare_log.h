#pragma once

#include "workload.h"

#include <cstddef>
#include <string>

namespace bench
{

// The floors of the subjects that process logs: bare calls of libxml2.

/// Writes the first `count` messages, from UTF-8, into one file through one writer.
void write_bare_log(const workload_t& workload, std::size_t count, const std::string& file_name);

/// Parses the text of a log with empty callbacks. Returns whether it is well-formed.
bool parse_bare_log(const std::string& text);

} // namespace bench

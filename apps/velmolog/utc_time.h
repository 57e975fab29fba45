#pragma once

#include <string>

namespace velmolog
{

/// Returns the time in the form of RFC 3339, in UTC with microseconds.
std::string utc_time_now();

} // namespace velmolog

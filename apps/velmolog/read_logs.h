#pragma once

#include "candidate.h"
#include "diagnostics.h"
#include "options.h"

#include <functional>

namespace velmolog
{

/// Reads the logs one after the other, and calls the function for each message that the filters
/// want, until it returns false. Reports damage, and logs that cannot be read. Returns the exit
/// status.
exit_status_t read_logs(const options_t& options, diagnostics_t& diagnostics,
                        const std::function<bool(candidate_t&)>& on_message);

} // namespace velmolog

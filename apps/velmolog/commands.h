#pragma once

#include "options.h"

#include <ostream>

namespace velmolog
{

// One function per command. Each writes its result to `output`, which throws if it cannot be
// written, and reports damage on standard error. Each returns the exit status. Throws usage_error_t
// or std::system_error if the command cannot run.

exit_status_t show(const options_t& options, std::ostream& output);
exit_status_t stats(const options_t& options, std::ostream& output);
exit_status_t check(const options_t& options, std::ostream& output);
exit_status_t rescue(const options_t& options, std::ostream& output);
exit_status_t diff(const options_t& options, std::ostream& output);

/// Writes a page; log_scan_t gives the entries, see show.cpp.
exit_status_t html(const options_t& options, std::ostream& output);

/// The command `show` with `--follow`: entry_sink_t takes the entries, see entry_sink.h.
exit_status_t follow(const options_t& options, std::ostream& output);

} // namespace velmolog

#include "commands.h"
#include "diagnostics.h"
#include "entry_sink.h"
#include "read_logs.h"

#include <unistd.h>

namespace velmolog
{

exit_status_t show(const options_t& options, std::ostream& output)
{
    if (options.is_followed)
        return follow(options, output);
    diagnostics_t diagnostics(isatty(STDOUT_FILENO) == 0);
    entry_sink_t sink(options, output);
    const exit_status_t status = read_logs(
        options, diagnostics, [&sink](candidate_t& candidate) { return sink.add(candidate); });
    sink.finish();
    return status;
}

} // namespace velmolog

#include "commands.h"
#include "diagnostics.h"
#include "entry_sink.h"
#include "read_logs.h"
#include "utc_time.h"

#include <unistd.h>

namespace velmolog
{

exit_status_t show(const options_t& options, std::ostream& output)
{
    if (options.is_followed)
        return follow(options, output);
    diagnostics_t diagnostics(isatty(STDOUT_FILENO) == 0, &output);
    const presenter_t presenter(options.catalogs);
    entry_sink_t sink(options, presenter, output);
    const exit_status_t status =
        read_logs(options, presenter, diagnostics, [&sink, &options](candidate_t& candidate) {
            if (options.is_observed)
                candidate.set_observed(utc_time_now());
            return sink.add(candidate);
        });
    sink.finish();
    return status;
}

} // namespace velmolog

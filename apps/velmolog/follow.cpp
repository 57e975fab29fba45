#include "candidate.h"
#include "commands.h"
#include "diagnostics.h"
#include "entry_sink.h"
#include "filter.h"
#include "log_follower.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace velmolog
{
namespace
{

void report_missing(const options_t& options)
{
    diagnostics_t diagnostics(false);
    for (const std::string& log : options.logs) {
        std::error_code error;
        if (!std::filesystem::exists(log, error))
            diagnostics.report(log + ": does not exist yet");
    }
}

} // namespace

exit_status_t follow(const options_t& options, std::ostream& output)
{
    const presenter_t presenter(options.catalogs);
    const filter_t filter(options.filter);
    entry_sink_t sink(options, presenter, output);
    log_follower_t follower(options.logs);
    report_missing(options);
    const auto on_entry = [&](const entry_t& entry) {
        candidate_t candidate(entry, presenter);
        return !filter.matches(candidate) || sink.add(candidate);
    };
    follower.run(on_entry, [&output] { output.flush(); });
    sink.finish();
    return follower.has_damage() ? found : fine;
}

} // namespace velmolog

#include "candidate.h"
#include "commands.h"
#include "diagnostics.h"
#include "entry_sink.h"
#include "filter.h"
#include "log_follower.h"
#include "log_input.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace velmolog
{
namespace
{

/// Throws log_error_t if a log exists that can never be read.
void check(const std::vector<std::string>& logs)
{
    diagnostics_t diagnostics(false);
    for (const std::string& log : logs) {
        std::error_code error;
        const auto status = std::filesystem::status(log, error);
        if (!std::filesystem::exists(status))
            diagnostics.report(log + ": does not exist yet");
        else if (!std::filesystem::is_regular_file(status))
            throw log_error_t(log + ": not a file, which --follow requires");
        else if (access(log.c_str(), R_OK) != 0 && errno == EACCES)
            throw log_error_t(log + ": " + std::generic_category().message(EACCES));
    }
}

} // namespace

exit_status_t follow(const options_t& options, std::ostream& output)
{
    const presenter_t presenter(options.catalogs);
    const filter_t filter(options.filter);
    entry_sink_t sink(options, presenter, output);
    log_follower_t follower(options.logs);
    check(options.logs);
    const auto on_entry = [&](const entry_t& entry) {
        candidate_t candidate(entry, presenter);
        return !filter.matches(candidate) || sink.add(candidate);
    };
    follower.run(on_entry, [&output] { output.flush(); });
    sink.finish();
    return follower.has_damage() ? found : fine;
}

} // namespace velmolog

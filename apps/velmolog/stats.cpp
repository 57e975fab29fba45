#include "stats_report.h"

#include "commands.h"
#include "diagnostics.h"
#include "read_logs.h"
#include "window.h"

#include <unistd.h>

#include <string>

namespace velmolog
{
namespace
{

/// The parts of a message that are counted.
struct counted_t
{
    velmoext_1_4_8::message_t::severity_t severity;
    std::string source;
    std::string type;
};

exit_status_t count(const options_t& options, stats_t& stats)
{
    diagnostics_t diagnostics(true);
    const auto add = [&stats](const auto& message) {
        stats.add(message.severity, message.source, message.type);
    };
    if (!options.first && !options.last)
        return read_logs(options, diagnostics, [&stats](candidate_t& candidate) {
            stats.add(candidate.severity(), candidate.source(), candidate.type());
            return true;
        });
    window_t<counted_t> window(options, add);
    const exit_status_t status = read_logs(options, diagnostics, [&window](candidate_t& candidate) {
        return window.add(
            {candidate.severity(), std::string(candidate.source()), std::string(candidate.type())});
    });
    window.finish();
    return status;
}

} // namespace

exit_status_t stats(const options_t& options, std::ostream& output)
{
    stats_t stats;
    const exit_status_t status = count(options, stats);
    if (options.format == format_t::json)
        write_json(output, stats);
    else
        write_tables(output, stats, isatty(STDOUT_FILENO) != 0);
    return status;
}

} // namespace velmolog

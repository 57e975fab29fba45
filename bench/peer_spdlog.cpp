// spdlog: a plain line per message into a file.

#include "peers.h"
#include "scratch_log.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/basic_file_sink.h>

#include <memory>

namespace
{

bench::candidate_t make_record(const bench::workload_t& workload)
{
    return {"spdlog", [&](std::size_t) -> bench::work_t {
                const auto log = std::make_shared<bench::scratch_log_t>();
                return [log, lines = workload.lines()](std::size_t count) {
                    const auto sink =
                        std::make_shared<spdlog::sinks::basic_file_sink_mt>(log->name());
                    spdlog::logger logger("bench", sink);
                    for (std::size_t i = 0; i < count; ++i)
                        logger.info(lines[i]);
                    logger.flush();
                    return log->size();
                };
            }};
}

const bool is_registered = bench::register_peer("record", make_record);

} // namespace

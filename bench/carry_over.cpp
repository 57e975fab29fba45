// A recording starts on a log and stops at once: the log's messages are carried over. The floor
// parses the log from memory with empty callbacks, and writes messages that exist already.

#include "bare_log.h"
#include "runner.h"
#include "scratch_log.h"

#include <memory>

namespace
{

using bench::scratch_log_t;
using bench::workload_t;

bench::candidate_t floor(const workload_t& workload)
{
    return {"floor", [&](std::size_t all) -> bench::work_t {
                return [&, text = bench::make_log(workload, all)->read(),
                        log = std::make_shared<scratch_log_t>()](std::size_t count) {
                    bench::require(bench::parse_bare_log(text), "the log is not well-formed");
                    bench::write_bare_log(workload, count, log->name());
                    return log->size();
                };
            }};
}

std::size_t carry_over(const scratch_log_t& log)
{
    const auto storage = log.storage();
    bench::require(storage->start_recording(), "the log cannot be recorded into");
    storage->stop_recording();
    return log.size();
}

bench::candidate_t velmoext1(const workload_t& workload)
{
    return {"velmoext1", [&](std::size_t all) -> bench::work_t {
                return [log = bench::make_log(workload, all)](std::size_t) {
                    const std::size_t before = log->size();
                    const std::size_t after = carry_over(*log);
                    // Texts with character references become longer each time.
                    bench::require(after >= before, "messages were lost");
                    return after;
                };
            }};
}

std::vector<bench::subject_t> make_subjects(const workload_t& workload)
{
    const auto min_output = [&](std::size_t count) {
        return workload.text_size(count);
    };
    bench::subject_t subject = {"carry_over", {floor(workload), velmoext1(workload)}, min_output};
    return {subject};
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run(argc, argv, make_subjects);
}

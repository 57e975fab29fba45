// Records messages into one file, including its creation and its end.

#include "bare_log.h"
#include "peers.h"
#include "runner.h"
#include "scratch_log.h"

#include <memory>

namespace
{

using bench::scratch_log_t;
using bench::workload_t;

bench::candidate_t floor(const workload_t& workload)
{
    return {"floor", [&](std::size_t) -> bench::work_t {
                return [&, log = std::make_shared<scratch_log_t>()](std::size_t count) {
                    bench::write_bare_log(workload, count, log->name());
                    return log->size();
                };
            }};
}

bench::candidate_t velmoext1(const workload_t& workload)
{
    return {"velmoext1", [&](std::size_t) -> bench::work_t {
                return [&, log = std::make_shared<scratch_log_t>()](std::size_t count) {
                    log->record(workload, count);
                    return log->size();
                };
            }};
}

std::vector<bench::subject_t> make_subjects(const workload_t& workload)
{
    const auto min_output = [&](std::size_t count) {
        return workload.text_size(count);
    };
    bench::subject_t subject = {"record", {floor(workload), velmoext1(workload)}, min_output};
    add_peers(subject, workload);
    return {subject};
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run(argc, argv, make_subjects);
}

// Replays a log: each message goes to one handler. The floor parses the file from memory with empty
// callbacks.

#include "bare_log.h"
#include "counting_handler.h"
#include "peers.h"
#include "runner.h"
#include "scratch_log.h"

#include <boost/make_shared.hpp>

#include <memory>

namespace
{

using bench::scratch_log_t;
using bench::workload_t;
using namespace velmoext_1_4_8;

bench::candidate_t floor(const workload_t& workload)
{
    return {"floor", [&](std::size_t all) -> bench::work_t {
                return [text = bench::make_log(workload, all)->read()](std::size_t count) {
                    return bench::parse_bare_log(text) ? count : 0;
                };
            }};
}

std::size_t replay(const scratch_log_t& log)
{
    const auto handler = boost::make_shared<bench::counting_handler_t>();
    const auto ex = velmo_ex_t::get(L"bench", L"");
    ex->push_handler(handler);
    const auto storage = log.storage();
    storage->start_reading();
    storage->replay(ex);
    return handler->count();
}

bench::candidate_t velmoext1(const workload_t& workload)
{
    return {"velmoext1", [&](std::size_t all) -> bench::work_t {
                return [log = bench::make_log(workload, all)](std::size_t) {
                    return replay(*log);
                };
            }};
}

std::vector<bench::subject_t> make_subjects(const workload_t& workload)
{
    const auto min_output = [](std::size_t count) {
        return count;
    };
    bench::subject_t subject = {"replay", {floor(workload), velmoext1(workload)}, min_output};
    add_peers(subject, workload);
    return {subject};
}

} // namespace

int main(int argc, char** argv)
{
    return bench::run(argc, argv, make_subjects);
}

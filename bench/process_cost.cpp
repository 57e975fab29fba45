#include "process_cost.h"

#include "runner.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <vector>

namespace bench
{
namespace
{

double microseconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec);
}

[[noreturn]] void run_child(const std::function<void()>& step)
{
    try {
        step();
        _exit(0);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        _exit(1);
    }
}

cost_t measure_one(const std::function<void()>& step)
{
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0)
        run_child(step);
    int status = 0;
    rusage usage = {};
    require(wait4(child, &status, 0, &usage) == child && status == 0, "a step failed");
    const std::chrono::duration<double, std::micro> elapsed =
        std::chrono::steady_clock::now() - start;
    const auto kilobytes =
        usage.ru_maxrss; // NOLINT(cppcoreguidelines-pro-type-union-access): as glibc has it
    return {microseconds(usage.ru_utime) + microseconds(usage.ru_stime), elapsed.count(),
            static_cast<double>(kilobytes) * 1024};
}

double median(const std::vector<cost_t>& costs, double cost_t::*kind)
{
    std::vector<double> values;
    values.reserve(costs.size());
    for (const cost_t& cost : costs)
        values.push_back(cost.*kind);
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

cost_t measure_all(int rounds, const std::function<void()>& step,
                   const std::function<void()>& prepare)
{
    std::vector<cost_t> costs;
    costs.reserve(static_cast<std::size_t>(rounds));
    for (int round = 0; round < rounds; ++round) {
        prepare();
        costs.push_back(measure_one(step));
    }
    return {median(costs, &cost_t::cpu), median(costs, &cost_t::elapsed),
            median(costs, &cost_t::memory)};
}

} // namespace

cost_t measure(int rounds, const std::function<void()>& step, const std::function<void()>& prepare)
{
    const auto do_nothing = [] {
    };
    const cost_t nothing = measure_all(rounds, do_nothing, do_nothing);
    const cost_t all = measure_all(rounds, step, prepare);
    return {all.cpu - nothing.cpu, all.elapsed - nothing.elapsed, all.memory};
}

} // namespace bench

#pragma once

#include <functional>

namespace bench
{

struct cost_t
{
    double cpu;     ///< microseconds of all threads, user and system
    double elapsed; ///< microseconds
    double memory;  ///< peak, in bytes
};

/// Returns the median cost of the step over the rounds. Runs each round in a child process and
/// subtracts the times of an empty step. `prepare` runs before each round, unmeasured, in this
/// process. The memory is the child's peak and includes what it inherits. Throws if the step fails.
cost_t measure(
    int rounds, const std::function<void()>& step, const std::function<void()>& prepare = [] {});

} // namespace bench

#pragma once

#include <functional>

namespace bench
{

struct cost_t
{
    double cpu;     ///< microseconds, of all threads, in the system too
    double elapsed; ///< microseconds
    double memory;  ///< bytes, at most at one time
};

/// Returns what the step takes beyond what nothing takes, each time in a process of its own: the
/// median of each kind over the rounds. `prepare` comes before each, unmeasured, in this process.
/// The memory is what the process has at most, with what it takes over from this one. Throws if the
/// step threw.
cost_t measure(
    int rounds, const std::function<void()>& step, const std::function<void()>& prepare = [] {});

} // namespace bench

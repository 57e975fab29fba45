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

/// What the step takes beyond what nothing takes, each time in a process of its own: the median of
/// each kind over the rounds. Throws where the step threw.
cost_t measure(int rounds, const std::function<void()>& step);

} // namespace bench

#pragma once

#include <atomic>
#include <thread>
#include <vector>

/// Runs the step in `count` threads, which start at the same moment, and joins them. Each thread
/// passes its number to the step.
template <typename Number, typename Step>
void run_threads(Number count, const Step& step)
{
    std::atomic<Number> ready{0};
    std::vector<std::thread> threads;
    for (Number number = 0; number < count; ++number)
        threads.emplace_back([&ready, &step, count, number] {
            ++ready;
            while (ready != count)
                std::this_thread::yield();
            step(number);
        });
    for (std::thread& thread : threads)
        thread.join();
}

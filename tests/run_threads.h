#pragma once

#include <thread>
#include <vector>

/// Runs it in that many threads at once, each told its number, and waits for all.
template <typename Number, typename Step>
void run_threads(Number count, const Step& step)
{
    std::vector<std::thread> threads;
    for (Number number = 0; number < count; ++number)
        threads.emplace_back([&step, number] { step(number); });
    for (std::thread& thread : threads)
        thread.join();
}

#pragma once

#include <atomic>
#include <thread>
#include <vector>

/// Runs it in that many threads, each told its number, all at the same moment, and waits for them.
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

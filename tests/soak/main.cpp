// Threads use few objects and logs at once for the requested time, with all operations of the
// library. Exactly the sent messages must be delivered, and memory in use must not grow.

#include "../run_threads.h"
#include "worker.h"

#include <malloc.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>

// If a sanitizer replaces the C library's allocator, this function returns the allocated bytes.
extern "C" std::size_t sanitizer_bytes() __asm__("__sanitizer_get_current_allocated_bytes")
    __attribute__((weak));

namespace
{

using soak::worker_t;
using soak::world_t;

const int rounds = 10;
const int warm_up_rounds = 3;
const std::int64_t max_growth_bytes = 65536;

struct options_t
{
    int seconds = 10;
    unsigned threads = 8;
    std::uint32_t seed = 1;
};

options_t parse_options(int argc, char** argv)
{
    options_t options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const auto value = static_cast<unsigned>(std::strtoul(argv[i + 1], nullptr, 10));
        if (std::strcmp(argv[i], "--seconds") == 0)
            options.seconds = static_cast<int>(value);
        else if (std::strcmp(argv[i], "--threads") == 0)
            options.threads = value;
        else if (std::strcmp(argv[i], "--seed") == 0)
            options.seed = value;
    }
    return options;
}

std::int64_t bytes_in_use()
{
    return static_cast<std::int64_t>(sanitizer_bytes != nullptr ? sanitizer_bytes()
                                                                : mallinfo2().uordblks);
}

// Returns the number of operations of all threads.
std::uint64_t run_round(world_t& world, const options_t& options, std::uint32_t seed)
{
    const auto end = std::chrono::steady_clock::now() +
                     std::chrono::milliseconds(options.seconds * 1000 / rounds);
    std::atomic<std::uint64_t> operations{0};
    run_threads(options.threads, [&](unsigned thread) {
        worker_t worker(world, thread, seed * 1000 + thread);
        std::uint64_t count = 0;
        for (; std::chrono::steady_clock::now() < end; ++count)
            worker.work();
        operations += count;
    });
    return operations;
}

} // namespace

int main(int argc, char** argv)
{
    const options_t options = parse_options(argc, argv);
    std::cout << "seed " << options.seed << std::endl;
    world_t world;
    std::uint64_t operations = 0;
    std::int64_t before = 0;
    std::int64_t after = 0;
    for (int round = 0; round < rounds; ++round) {
        operations += run_round(world, options, options.seed + static_cast<std::uint32_t>(round));
        world.clear();
        after = bytes_in_use();
        if (round + 1 == warm_up_rounds)
            before = after;
        std::cout << "round " << round + 1 << ": " << operations << " operations, "
                  << world.messages() << " messages delivered, " << after << " bytes in use"
                  << std::endl;
    }
    const bool is_flat = after - before <= max_growth_bytes;
    std::cout << operations << " operations by " << options.threads << " threads, "
              << world.failures() << " failures, memory grew by " << after - before
              << " bytes after " << warm_up_rounds << " of " << rounds << " rounds" << std::endl;
    return world.failures() == 0 && is_flat ? EXIT_SUCCESS : EXIT_FAILURE;
}

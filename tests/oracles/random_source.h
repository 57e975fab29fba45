#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

/// Source of random choices: the same ones for the same seed.
class random_source_t
{
public:
    explicit random_source_t(std::uint64_t seed) : m_engine(seed) {}

    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(m_engine() % bound); }
    std::size_t between(std::size_t first, std::size_t last)
    {
        return first + below(last - first + 1);
    }
    bool one_in(std::size_t count) { return below(count) == 0; }

    template <typename T, std::size_t Count>
    const T& pick(const std::array<T, Count>& values)
    {
        return values.at(below(Count));
    }

private:
    std::mt19937_64 m_engine;
};

/// The seeds of one test's cases: `count` of them, starting at `first`. The environment can set the
/// count, VELMOEXT1_RANDOM_CASES, and the first one, VELMOEXT1_RANDOM_SEED.
struct random_seeds_t
{
    std::uint64_t first = 1;
    std::uint64_t count;

    explicit random_seeds_t(std::uint64_t usual_count) : count(usual_count)
    {
        read("VELMOEXT1_RANDOM_CASES", count);
        read("VELMOEXT1_RANDOM_SEED", first);
    }
    std::uint64_t end() const { return first + count; }

private:
    static void read(const char* name, std::uint64_t& number)
    {
        if (const char* const text = std::getenv(name)) // NOLINT(concurrency-mt-unsafe)
            number = std::strtoull(text, nullptr, 10);
    }
};

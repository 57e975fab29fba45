#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

/// Whose allocations fail. A program that is linked with this has all of them counted, each
/// thread's for itself.
enum class memory_t
{
    cxx,
    libxml2,
    icu
};

/// How many fail: a single one, or all from that one on.
enum class extent_t
{
    one,
    rest
};

/// What the thread that runs out of memory did before: nothing, so that it keeps nothing yet, or
/// the same once.
enum class thread_state_t
{
    fresh,
    warm
};

/// Lets allocations of this thread fail as long as it lives, beginning with the one behind so many
/// successes. One at a time per thread.
class failing_allocations_t
{
public:
    failing_allocations_t(memory_t memory, extent_t extent, long successes);
    ~failing_allocations_t();
    failing_allocations_t(const failing_allocations_t&) = delete;
    failing_allocations_t& operator=(const failing_allocations_t&) = delete;

    /// Whether one failed on this thread while the last of these lived.
    static bool has_failed();
};

/// One go at an operation. What it takes was made beforehand, with all the memory there is.
struct attempt_t
{
    /// The operation and nothing else.
    std::function<void()> run;
    /// What came of it, asked once when there is memory again: empty for a refusal.
    std::function<std::string()> result;
};

struct operation_t
{
    std::string name;
    std::vector<memory_t> memories; ///< which it asks for memory
    std::function<attempt_t()> prepare;
    std::string right; ///< the result where there is memory
};

struct allocation_case_t
{
    operation_t operation;
    memory_t memory = memory_t::cxx;
    extent_t extent = extent_t::one;
    thread_state_t thread = thread_state_t::fresh;
};

std::vector<allocation_case_t> cases_of(const std::vector<operation_t>& operations);
std::string name_of_case(const testing::TestParamInfo<allocation_case_t>& info);
std::ostream& operator<<(std::ostream& out, const allocation_case_t& one);

/// Lets the operation's first allocation fail, then the second, and so on, until it needs no more.
/// Each time it must throw std::bad_alloc, or have a result that is empty or right; must leave
/// libxml2's state of the thread as it was and tell its handlers nothing; and must then give the
/// right result on this thread and on another one. Prints how the attempts ended.
class allocation_test : public testing::TestWithParam<allocation_case_t>
{
protected:
    static void fail_each_allocation(const allocation_case_t& one);
};

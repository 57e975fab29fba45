#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

/// The library whose allocations fail. A program that is linked with this file has all of them
/// counted, per thread.
enum class memory_t
{
    cxx,
    libxml2,
    icu
};

/// The number of failures: a single one, or all from that one on.
enum class extent_t
{
    one,
    rest
};

/// The thread's state before it runs out of memory: it has run nothing, so that it keeps nothing
/// yet, or it has run the same operation once.
enum class thread_state_t
{
    fresh,
    warm
};

/// Makes allocations of this thread fail while in scope, after that number of successes. At most
/// one object per thread.
class failing_allocations_t
{
public:
    failing_allocations_t(memory_t memory, extent_t extent, long successes);
    ~failing_allocations_t();
    failing_allocations_t(const failing_allocations_t&) = delete;
    failing_allocations_t& operator=(const failing_allocations_t&) = delete;

    /// Returns whether an allocation failed on this thread while the last of these objects existed.
    static bool has_failed();
};

/// One attempt at an operation. Its input was created before, with enough memory.
struct attempt_t
{
    /// Runs the operation only.
    std::function<void()> run;
    /// Returns the outcome, empty for a refusal. Called once, when there is enough memory again.
    std::function<std::string()> result;
};

struct operation_t
{
    std::string name;
    std::vector<memory_t> memories; ///< those that it allocates from
    std::function<attempt_t()> prepare;
    std::string right; ///< the result with enough memory
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

/// Makes the operation's first allocation fail, then the second, and so on, until it needs no more.
/// Prints how the attempts ended. Each attempt must
/// - throw std::bad_alloc, or have a result that is empty or right;
/// - leave libxml2's state of the thread unchanged, and not call its handlers;
/// - allow the right result afterwards, on this thread and on another one.
class allocation_test : public testing::TestWithParam<allocation_case_t>
{
protected:
    static void fail_each_allocation(const allocation_case_t& one);
};

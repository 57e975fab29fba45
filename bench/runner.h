/// @file
/// What all programs share: candidates that do the same work, one of them the floor, are measured
/// side by side.
#pragma once

#include "workload.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench
{

/// Does the work once for each of the first `count` messages, and answers how much it made of them.
typedef std::function<std::size_t(std::size_t count)> work_t;

/// One way of doing a subject's work.
struct candidate_t
{
    std::string name;
    /// Sets up what is not measured, for work on that many messages; what it answers is measured,
    /// and may be called several times. Throws where the candidate does not do its work.
    std::function<work_t(std::size_t count)> prepare;
};

struct subject_t
{
    std::string name;
    std::vector<candidate_t> candidates;
    /// What each candidate makes of that many messages at least: one that does nothing fails.
    std::function<std::size_t(std::size_t count)> least;
    /// How often a round goes over the messages: what takes nanoseconds needs more than one pass.
    int passes = 1;
};

/// A program's main(). Its options, before those of Google Benchmark:
/// `--messages N`          the size of the workload;
/// `--names`               prints SUBJECT/CANDIDATE for all there are;
/// `--once NAME COUNT`     has one candidate work on COUNT messages, and measures nothing.
int run(int argc, char** argv,
        const std::function<std::vector<subject_t>(const workload_t&)>& make_subjects);

/// Throws where a candidate did not give what it should.
void require(bool condition, const std::string& what);

} // namespace bench

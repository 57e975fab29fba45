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

/// Does the work once for each of the first `count` messages. Returns how much it made of them.
typedef std::function<std::size_t(std::size_t count)> work_t;

/// One way of doing a subject's work.
struct candidate_t
{
    std::string name;
    /// Sets up what is not measured, for work on that many messages. Returns the work that is
    /// measured; unless the subject has one pass, it is called several times. Throws if the
    /// candidate does not do its work.
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
/// `--spread`              messages spread over the heap, and "_spread" after each subject's name;
/// `--names`               prints SUBJECT/CANDIDATE for all there are;
/// `--once NAME COUNT`     has one candidate work on COUNT messages, and measures nothing.
int run(int argc, char** argv,
        const std::function<std::vector<subject_t>(const workload_t&)>& make_subjects);

/// Keeps temporary files in memory if the system has a folder for that and TMPDIR names no other:
/// what a disk costs is none of the library's.
void prefer_memory_files();

/// Throws if a candidate did not give what it should.
void require(bool condition, const std::string& what);

} // namespace bench

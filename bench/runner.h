/// @file
/// Runner of all programs. Measures candidates that do the same work; one of them is the floor.
#pragma once

#include "workload.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench
{

/// Does the work once for each of the first `count` messages. Returns the amount of its output.
typedef std::function<std::size_t(std::size_t count)> work_t;

/// One way of doing a subject's work.
struct candidate_t
{
    std::string name;
    /// Prepares, unmeasured, for work on `count` messages. Returns the work to measure, which is
    /// called once per pass. Throws if the candidate does not do its work.
    std::function<work_t(std::size_t count)> prepare;
};

struct subject_t
{
    std::string name;
    std::vector<candidate_t> candidates;
    /// Returns the minimum output for `count` messages. A candidate with less output fails.
    std::function<std::size_t(std::size_t count)> min_output;
    /// Passes over the messages in a round. Work that takes nanoseconds needs more than one.
    int passes = 1;
};

/// A program's main(). Its options, before those of Google Benchmark:
/// `--messages N`          the size of the workload;
/// `--spread`              messages spread over the heap, and "_spread" after each subject's name;
/// `--names`               prints SUBJECT/CANDIDATE for each candidate;
/// `--once NAME COUNT`     runs one candidate on COUNT messages, and measures nothing.
int run(int argc, char** argv,
        const std::function<std::vector<subject_t>(const workload_t&)>& make_subjects);

/// Keeps temporary files in memory if the system has a folder for that and TMPDIR is not set: the
/// time of a disk is not the library's.
void prefer_memory_files();

/// Throws if the condition, which a candidate must meet, is false.
void require(bool condition, const std::string& what);

} // namespace bench

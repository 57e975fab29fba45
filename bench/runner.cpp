#include "runner.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>

#include <unistd.h>

namespace bench
{

// Not inlined: callgrind counts from its entry to its return.
[[gnu::noinline]] std::size_t perform(const work_t& work, std::size_t count)
{
    std::size_t output = work(count);
    benchmark::DoNotOptimize(output);
    return output;
}

namespace
{

struct options_t
{
    std::size_t messages = 200000;
    heap_t heap = heap_t::fresh;
    bool names = false;
    std::string once;
    std::size_t count = 0;
};

std::size_t parse_count(const char* text)
{
    const long count = std::strtol(text, nullptr, 10);
    require(count > 0, std::string("not a count: ") + text);
    return static_cast<std::size_t>(count);
}

// Removes the program's own options from the front of the arguments.
options_t parse_options(int& argc, char** argv)
{
    options_t options;
    int at = 1;
    for (; at < argc; ++at) {
        const std::string argument = argv[at];
        if (argument == "--messages" && at + 1 < argc) {
            options.messages = parse_count(argv[++at]);
        } else if (argument == "--spread") {
            options.heap = heap_t::spread;
        } else if (argument == "--names") {
            options.names = true;
        } else if (argument == "--once" && at + 2 < argc) {
            options.once = argv[++at];
            options.count = parse_count(argv[++at]);
        } else {
            break;
        }
    }
    std::copy(argv + at, argv + argc, argv + 1);
    argc -= at - 1;
    return options;
}

void check(const subject_t& subject, std::size_t output, std::size_t count)
{
    require(output >= subject.min_output(count), "the output is too small");
}

void measure(benchmark::State& state, const subject_t& subject, const candidate_t& candidate,
             std::size_t count)
{
    try {
        const work_t work = candidate.prepare(count);
        std::size_t output = 0;
        while (state.KeepRunning())
            output = perform(work, count);
        check(subject, output, count);
        state.SetItemsProcessed(static_cast<std::int64_t>(count) * subject.passes);
    } catch (const std::exception& error) {
        // Google Benchmark would print the error and report success.
        std::fprintf(stderr, "%s/%s: %s\n", subject.name.c_str(), candidate.name.c_str(),
                     error.what());
        std::exit(EXIT_FAILURE); // NOLINT(concurrency-mt-unsafe)
    }
}

// One iteration processes the whole workload, so that all candidates do the same work.
void register_all(const std::vector<subject_t>& subjects, std::size_t count)
{
    for (const subject_t& subject : subjects)
        for (const candidate_t& candidate : subject.candidates)
            benchmark::RegisterBenchmark(
                (subject.name + '/' + candidate.name).c_str(),
                [&, count](benchmark::State& state) { measure(state, subject, candidate, count); })
                ->Iterations(subject.passes)
                ->MeasureProcessCPUTime()
                ->Unit(benchmark::kMillisecond);
}

void run_once(const std::vector<subject_t>& subjects, const options_t& options)
{
    for (const subject_t& subject : subjects)
        for (const candidate_t& candidate : subject.candidates)
            if (subject.name + '/' + candidate.name == options.once) {
                const work_t work = candidate.prepare(options.count);
                check(subject, perform(work, options.count), options.count);
                return;
            }
    throw std::invalid_argument("no such candidate: " + options.once);
}

void print_names(const std::vector<subject_t>& subjects)
{
    for (const subject_t& subject : subjects)
        for (const candidate_t& candidate : subject.candidates)
            std::printf("%s/%s\n", subject.name.c_str(), candidate.name.c_str());
}

std::vector<subject_t> name_heap(std::vector<subject_t> subjects, heap_t heap)
{
    if (heap == heap_t::spread)
        for (subject_t& subject : subjects)
            subject.name += "_spread";
    return subjects;
}

void run(const std::vector<subject_t>& subjects, const options_t& options, int argc, char** argv)
{
    if (options.names)
        return print_names(subjects);
    if (!options.once.empty())
        return run_once(subjects, options);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        throw std::invalid_argument("see the options above");
    register_all(subjects, options.messages);
    require(benchmark::RunSpecifiedBenchmarks() > 0, "nothing was measured");
}

} // namespace

int run(int argc, char** argv,
        const std::function<std::vector<subject_t>(const workload_t&)>& make_subjects)
{
    try {
        const options_t options = parse_options(argc, argv);
        require(options.count <= options.messages, "the workload is smaller than that");
        prefer_memory_files();
        // Never destroyed, since that would take as long as some of the measured work.
        const auto* const workload = new workload_t(options.messages, options.heap);
        run(name_heap(make_subjects(*workload), options.heap), options, argc, argv);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return EXIT_FAILURE;
    }
}

void prefer_memory_files()
{
    const char* const folder = "/dev/shm";
    if (access(folder, W_OK) == 0)
        setenv("TMPDIR", folder, 0); // NOLINT(concurrency-mt-unsafe): no other thread yet
}

void require(bool condition, const std::string& what)
{
    if (!condition)
        throw std::runtime_error(what);
}

} // namespace bench

#include "channel.h"
#include "consumer.h"
#include "interrupt.h"
#include "library_names.h"
#include "options.h"
#include "output.h"
#include "path_text.h"
#include "progress_reporter.h"
#include "reporter.h"
#include "terminal_progress.h"
#include "terminal_text.h"
#include "tree_walker.h"

#include <velmoext1/velmo_adapter.h>

#include <boost/make_shared.hpp>

#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <string>
#include <system_error>

namespace audit
{
namespace
{

enum exit_code_t
{
    complete = 0,
    wrong_usage = 1,
    unreadable_directory = 2,
    unwritable_output = 3,
    interrupted = 130
};

void complain(const std::string& text)
{
    std::fprintf(stderr, "audit: %s\n", text.c_str());
}

int finish(output_t& output, exit_code_t code)
{
    output.flush();
    if (!output.error())
        return code;
    complain("standard output cannot be written: " + output.error().message());
    return unwritable_output;
}

int print(const std::string& text)
{
    output_t output(STDOUT_FILENO);
    output.write(text);
    return finish(output, complete);
}

int refuse(const std::string& directory, std::error_code error)
{
    complain("'" + terminal_text(path_text(directory)) + "' cannot be read: " + error.message());
    return unreadable_directory;
}

void show_figures(std::uint64_t messages, std::uint64_t lines)
{
    std::fprintf(stderr,
                 "audit: %" PRIu64 " messages crossed the channel, %" PRIu64 " were shown\n",
                 messages, lines);
}

// The host between two components that know nothing of each other: the one that walks and the one
// that prints.
int walk(const options_t& options)
{
    const bool is_watched = options.progress || ::isatty(STDERR_FILENO) != 0;
    std::uint64_t lines = 0;
    output_t output(STDOUT_FILENO);
    const auto progress = boost::make_shared<terminal_progress_t>(
        is_watched, [&] { return is_interrupted() || output.error(); });
    consumer_t consumer(options.severity, [&](const std::string& line) {
        ++lines;
        progress->hide();
        output.write(line + '\n');
    });
    channel_t channel(consumer.messenger());

    velmoext::velmo_adapter_t outbound;
    outbound.set_output_velmo(&channel);
    reporter_t reporter(outbound);
    progress_reporter_t progress_reporter(consumer.ex(), consumer.progress_handler(), progress);
    tree_walker_t walker(reporter, progress_reporter, options.large);
    if (const std::error_code error = walker.walk(options.directory))
        return refuse(options.directory, error);

    progress->hide();
    const int code = finish(output, walker.is_complete() ? complete : interrupted);
    if (is_watched)
        show_figures(channel.count(), lines);
    return code;
}

int run(const options_t& options)
{
    switch (options.action) {
    case options_t::help:
        return print(usage_text());
    case options_t::version:
        return print(version_text());
    default:
        return walk(options);
    }
}

} // namespace
} // namespace audit

int main(int argc, char** argv)
{
    // A reader that went away is an error like any other of standard output.
    std::signal(SIGPIPE, SIG_IGN);
    audit::watch_for_interrupt();
    try {
        return audit::run(audit::parse_options({argv + std::min(argc, 1), argv + argc}));
    } catch (const audit::usage_error_t& error) {
        audit::complain(error.what() + std::string("; see audit --help"));
        return audit::wrong_usage;
    }
}

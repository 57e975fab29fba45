#include "catalogs.h"
#include "channel.h"
#include "consumer.h"
#include "counting_handler.h"
#include "interrupt.h"
#include "library_names.h"
#include "locations.h"
#include "log.h"
#include "options.h"
#include "output.h"
#include "plain_line.h"
#include "progress_reporter.h"
#include "quoted.h"
#include "readable_line.h"
#include "reporter.h"
#include "terminal_progress.h"
#include "tree_walker.h"

#include <velmoext1/velmo_adapter.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

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
    unusable_path = 2,
    unwritable_output = 3,
    interrupted = 130
};

const char unrecordable[] =
    " cannot be recorded into: it is not a writable regular file, or another process records into "
    "it, or its contents cannot be carried over";
const char unreadable[] = " cannot be replayed: it is not a readable regular file";
const char without_message[] = " cannot be replayed: it contains no message";

void print_error(const std::string& text)
{
    std::fprintf(stderr, "audit: %s\n", text.c_str());
}

int reject_path(const std::string& path, const std::string& reason)
{
    print_error(quoted(path) + reason);
    return unusable_path;
}

int finish(output_t& output, exit_code_t code)
{
    output.flush();
    if (!output.error())
        return code;
    print_error("standard output cannot be written: " + output.error().message());
    return unwritable_output;
}

int print(const std::string& text)
{
    output_t output(STDOUT_FILENO);
    output.write(text);
    return finish(output, complete);
}

printer_t::line_maker_t line_maker(bool is_plain)
{
    if (is_plain)
        return [](const auto& /*ex*/, const auto& message) {
            return plain_line(*message);
        };
    return readable_line;
}

// The host of two independent components. One prints; the other one walks, or is the log of an
// earlier walk.
class host_t
{
public:
    explicit host_t(const options_t& options);
    host_t(const host_t&) = delete;
    host_t& operator=(const host_t&) = delete;
    ~host_t() = default;

    int walk();
    int replay();

private:
    void choose_language();
    void show(const std::string& line);
    int end(exit_code_t code, std::uint64_t messages, const char* outcome);

    const options_t& m_options;
    const bool m_is_watched;
    locations_t m_locations;
    output_t m_output{STDOUT_FILENO};
    std::uint64_t m_lines = 0;
    const boost::shared_ptr<terminal_progress_t> m_progress;
    consumer_t m_consumer;
};

host_t::host_t(const options_t& options)
    : m_options(options), m_is_watched(options.progress || ::isatty(STDERR_FILENO) != 0),
      m_progress(boost::make_shared<terminal_progress_t>(
          m_is_watched, [this] { return is_interrupted() || m_output.error(); })),
      m_consumer(options.severity, line_maker(options.plain),
                 [this](const std::string& line) { show(line); })
{
    if (!m_options.plain)
        choose_language();
}

// If the user names a language, texts in another one would look like a mistake.
void host_t::choose_language()
{
    if (!m_options.language)
        bind_catalogs_or_english(m_locations.locale_dir(), environment_language());
    else if (!bind_catalogs(m_locations.locale_dir(), *m_options.language))
        throw usage_error_t("there are no texts for --lang " + quoted(*m_options.language));
}

int host_t::walk()
{
    watch_for_interrupt();
    recording_t recording;
    if (m_options.log && !recording.start(*m_options.log, *m_consumer.ex()))
        return reject_path(*m_options.log, unrecordable);

    channel_t channel(m_consumer.messenger());
    velmoext::velmo_adapter_t outbound;
    outbound.set_output_velmo(&channel);
    reporter_t reporter(outbound);
    progress_reporter_t progress(m_consumer.ex(), m_consumer.progress_handler(), m_progress);
    tree_walker_t walker(reporter, progress, m_options.large);
    if (const std::error_code error = walker.walk(m_options.directory))
        return reject_path(m_options.directory, " cannot be read: " + error.message());
    // Before the last output, which can block for long.
    recording.stop();
    return end(walker.is_complete() ? complete : interrupted, channel.count(),
               "crossed the channel");
}

int host_t::replay()
{
    const auto log = open_log(m_options.replayed_log);
    if (!log->start_reading())
        return reject_path(m_options.replayed_log, unreadable);
    const auto counter = boost::make_shared<counting_handler_t>();
    m_consumer.ex()->push_handler(counter);
    // A replay also succeeds for some texts that are not logs, but delivers nothing.
    if (!log->replay(m_consumer.ex()) || counter->count() == 0)
        return reject_path(m_options.replayed_log, without_message);
    return end(complete, counter->count(), "were replayed");
}

void host_t::show(const std::string& line)
{
    ++m_lines;
    m_progress->hide();
    m_output.write(line + '\n');
}

int host_t::end(exit_code_t code, std::uint64_t messages, const char* outcome)
{
    m_progress->hide();
    const int result = finish(m_output, code);
    if (m_is_watched)
        std::fprintf(stderr, "audit: %" PRIu64 " messages %s, %" PRIu64 " were shown\n", messages,
                     outcome, m_lines);
    return result;
}

int run(const options_t& options)
{
    switch (options.action) {
    case options_t::help:
        return print(usage_text());
    case options_t::version:
        return print(version_text());
    case options_t::replay:
        return host_t(options).replay();
    default:
        return host_t(options).walk();
    }
}

} // namespace
} // namespace audit

int main(int argc, char** argv)
{
    // A closed pipe is reported like any other error of standard output.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return audit::run(audit::parse_options({argv + std::min(argc, 1), argv + argc}));
    } catch (const audit::usage_error_t& error) {
        audit::print_error(error.what() + std::string("; see audit --help"));
        return audit::wrong_usage;
    }
}

#include "commands.h"
#include "common/escape_controls.h"
#include "options.h"
#include "output_buffer.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <iostream>

namespace
{

using namespace velmolog;

exit_status_t run(const options_t& options, std::ostream& output)
{
    switch (options.command) {
    case command_t::show:
        return show(options, output);
    case command_t::stats:
        return stats(options, output);
    case command_t::check:
        return check(options, output);
    case command_t::rescue:
        return rescue(options, output);
    case command_t::diff:
        return diff(options, output);
    case command_t::html:
        return html(options, output);
    }
    return cannot_run;
}

exit_status_t run(int count, char** arguments)
{
    const auto options = read_options(count, arguments);
    if (!options)
        return fine;
    output_buffer_t buffer(STDOUT_FILENO);
    std::ostream output(&buffer);
    output.exceptions(std::ios::badbit | std::ios::failbit);
    const exit_status_t status = run(*options, output);
    output.flush();
    return status;
}

void report(const std::exception& error)
{
    std::cerr << "velmolog: " + app_common::escape_controls(error.what()) + "\n";
}

/// Opens the null device for standard streams that are closed, so that their use fails. Otherwise a
/// file that is opened later would be one of them.
void open_standard_streams()
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) == -1)                                    // NOLINT(*-vararg)
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY); // NOLINT(*-vararg)
}

} // namespace

int main(int count, char** arguments)
{
    open_standard_streams();
    // A closed pipe is an error of write(), which ends the program as any other failed output.
    std::signal(SIGPIPE, SIG_IGN); // NOLINT(cert-err33-c)
    try {
        return run(count, arguments);
    } catch (const output_error_t& error) {
        if (!error.is_closed_pipe())
            report(error);
    } catch (const std::exception& error) {
        report(error);
    }
    return cannot_run;
}

#include "stop_signals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace velmolog
{
namespace
{

volatile std::sig_atomic_t is_signal_received = 0;
volatile std::sig_atomic_t event = -1;

void on_signal(int /*number*/)
{
    const int error = errno;
    const std::uint64_t one = 1;
    is_signal_received = 1;
    [[maybe_unused]] const ssize_t written = write(event, &one, sizeof(one));
    errno = error;
}

void catch_signal(int number, struct sigaction& previous)
{
    struct sigaction action = {};
    action.sa_handler = on_signal;
    // A write to a slow reader of the output must not fail, and a second signal must end it.
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    sigaction(number, nullptr, &previous);
    if (previous.sa_handler != SIG_IGN)
        sigaction(number, &action, nullptr);
}

} // namespace

stop_signals_t::stop_signals_t()
{
    is_signal_received = 0;
    event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    catch_signal(SIGINT, m_on_interrupt);
    catch_signal(SIGTERM, m_on_terminate);
}

stop_signals_t::~stop_signals_t()
{
    sigaction(SIGINT, &m_on_interrupt, nullptr);
    sigaction(SIGTERM, &m_on_terminate, nullptr);
    if (event != -1)
        close(event);
    event = -1;
}

bool stop_signals_t::is_received()
{
    return is_signal_received != 0;
}

int stop_signals_t::descriptor()
{
    return event;
}

} // namespace velmolog

#include "interrupt.h"

#include <csignal>

namespace audit
{
namespace
{

volatile std::sig_atomic_t interrupted = 0;

extern "C" void mark_interrupt(int /*signal*/)
{
    interrupted = 1;
}

} // namespace

void watch_for_interrupt()
{
    struct sigaction action = {};
    ::sigaction(SIGINT, nullptr, &action);
    if (action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = mark_interrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(SIGINT, &action, nullptr);
}

bool is_interrupted()
{
    return interrupted != 0;
}

} // namespace audit

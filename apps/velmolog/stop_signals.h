#pragma once

#include <csignal>

namespace velmolog
{

/// Catches SIGINT and SIGTERM while in scope, so that a program can end in order. A second signal
/// ends the process at once. A signal that was ignored before remains ignored. One object at a
/// time.
class stop_signals_t
{
public:
    stop_signals_t();
    stop_signals_t(const stop_signals_t&) = delete;
    stop_signals_t& operator=(const stop_signals_t&) = delete;
    ~stop_signals_t();

    /// Returns whether a signal was received.
    static bool is_received();
    /// Returns a descriptor that can be read after a signal, -1 if the system has none left.
    static int descriptor();

private:
    struct sigaction m_on_interrupt = {};
    struct sigaction m_on_terminate = {};
};

} // namespace velmolog

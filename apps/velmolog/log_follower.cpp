#include "log_follower.h"

#include "file_events.h"
#include "followed_log.h"
#include "stop_signals.h"

#include <algorithm>
#include <chrono>
#include <memory>

namespace velmolog
{
namespace
{

typedef std::vector<std::unique_ptr<followed_log_t>> logs_t;

enum class outcome_t
{
    idle,
    more,
    refused ///< by the callback
};

// The logs take turns: one that grows fast does not keep out the others.
outcome_t read_once(const logs_t& logs, const log_follower_t::on_entry_t& on_entry)
{
    outcome_t outcome = outcome_t::idle;
    std::vector<entry_t> entries;
    for (const auto& log : logs) {
        entries.clear();
        if (log->read(entries))
            outcome = outcome_t::more;
        if (!std::all_of(entries.begin(), entries.end(), on_entry))
            return outcome_t::refused;
    }
    return outcome;
}

// Rounds up: a wait that ends too early would be repeated at once.
std::chrono::milliseconds time_to_next_look(const logs_t& logs)
{
    auto next = std::chrono::steady_clock::time_point::max();
    for (const auto& log : logs)
        next = std::min(next, log->next_look());
    const auto time = std::max(next - std::chrono::steady_clock::now(),
                               std::chrono::steady_clock::duration::zero());
    return std::chrono::ceil<std::chrono::milliseconds>(time);
}

} // namespace

log_follower_t::log_follower_t(const std::vector<std::string>& logs) : m_logs(logs) {}

void log_follower_t::run(const on_entry_t& on_entry, const std::function<void()>& on_idle)
{
    const stop_signals_t signals;
    file_events_t events;
    logs_t logs;
    if (m_logs.empty())
        return;
    for (const std::string& log : m_logs)
        logs.push_back(std::make_unique<followed_log_t>(log, events));
    for (outcome_t outcome = outcome_t::idle;
         outcome != outcome_t::refused && !stop_signals_t::is_received();) {
        events.dispatch();
        outcome = read_once(logs, on_entry);
        if (outcome != outcome_t::idle)
            continue;
        if (on_idle)
            on_idle();
        events.wait(stop_signals_t::descriptor(), time_to_next_look(logs));
    }
    m_has_damage =
        std::any_of(logs.begin(), logs.end(), [](const auto& log) { return log->has_damage(); });
}

} // namespace velmolog

#include "followed_file.h"

#include <sys/inotify.h>

#include <ctime>
#include <utility>

namespace velmolog
{
namespace
{

constexpr std::chrono::minutes max_idle_time(10);
// File systems count a file's time in steps of up to two seconds.
const std::time_t max_time_step = 2;

bool is_recent(const timespec& time)
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec - time.tv_sec <= max_time_step;
}

} // namespace

followed_file_t::followed_file_t(std::string log, descriptor_t file, file_events_t& events)
    : m_file(std::move(file)), m_reader(std::move(log), m_file.get()), m_events(events),
      m_watch(events.watch_file(m_file,
                                [this](std::uint32_t mask, const std::string&) { on_event(mask); }))
{}

followed_file_t::~followed_file_t()
{
    m_events.end(m_watch);
}

void followed_file_t::on_event(std::uint32_t mask)
{
    m_is_settled = false;
    m_is_notified = m_is_notified || (mask & IN_MODIFY) != 0;
    if ((mask & (IN_MODIFY | IN_CLOSE_WRITE)) != 0)
        m_is_closed = (mask & IN_CLOSE_WRITE) != 0;
}

followed_file_t::result_t followed_file_t::read(bool is_thorough, std::vector<entry_t>& entries)
{
    const file_state_t now = state_of(m_file);
    const bool is_same = now == m_state;
    if (is_same && m_is_settled)
        return result_t::nothing;
    if (!is_same)
        m_last_change = std::chrono::steady_clock::now();
    m_state = now;
    m_is_settled = !is_recent(now.modified);
    const result_t result = m_reader.read(is_thorough, entries);
    if (result != result_t::nothing || next_look() > std::chrono::steady_clock::now())
        m_is_settled = false;
    m_is_replaced = result == result_t::replaced;
    if (!m_is_replaced)
        m_is_notified = false;
    return result;
}

stable_reader_t& followed_file_t::reader()
{
    m_is_settled = false;
    m_is_replaced = false;
    return m_reader;
}

bool followed_file_t::is_complete() const
{
    return m_reader.has_ended() || m_is_closed || m_is_replaced ||
           std::chrono::steady_clock::now() - m_last_change > max_idle_time;
}

} // namespace velmolog

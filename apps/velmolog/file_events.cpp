#include "file_events.h"

#include "file_calls.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <utility>

namespace velmolog
{
namespace
{

const std::uint32_t file_changes = IN_MODIFY | IN_CLOSE_WRITE;
const std::uint32_t folder_changes = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                     IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

file_events_t::file_events_t() : m_queue(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {}

file_events_t::id_t file_events_t::watch_file(const descriptor_t& file, on_event_t on_event)
{
    return watch("/proc/self/fd/" + std::to_string(file.get()), file_changes, std::move(on_event));
}

file_events_t::id_t file_events_t::watch_folder(const std::string& path, on_event_t on_event)
{
    return watch(path, folder_changes, std::move(on_event));
}

file_events_t::id_t file_events_t::watch(const std::string& path, std::uint32_t mask,
                                         on_event_t on_event)
{
    const int watch = m_queue.is_open() ? inotify_add_watch(m_queue.get(), path.c_str(), mask) : -1;
    if (watch == -1)
        return 0;
    m_ids_of_watch.emplace(watch, ++m_last_id);
    m_callbacks.emplace(m_last_id, std::move(on_event));
    return m_last_id;
}

void file_events_t::end(id_t id)
{
    m_callbacks.erase(id);
    for (auto found = m_ids_of_watch.begin(); found != m_ids_of_watch.end(); ++found) {
        if (found->second != id)
            continue;
        const int watch = found->first;
        m_ids_of_watch.erase(found);
        if (m_ids_of_watch.count(watch) == 0)
            inotify_rm_watch(m_queue.get(), watch);
        return;
    }
}

void file_events_t::call_all(int watch, std::uint32_t mask, const std::string& name)
{
    const auto ids = m_ids_of_watch.equal_range(watch);
    for (auto id = ids.first; id != ids.second; ++id)
        m_callbacks.at(id->second)(mask, name);
}

// Returns the size of the event.
std::size_t file_events_t::dispatch_first(const char* events)
{
    inotify_event event = {};
    std::memcpy(&event, events, sizeof(event));
    const std::string name = event.len == 0 ? "" : events + sizeof(event);
    if ((event.mask & IN_Q_OVERFLOW) != 0)
        for (const auto& callback : m_callbacks)
            callback.second(event.mask, "");
    else
        call_all(event.wd, event.mask, name);
    if ((event.mask & IN_IGNORED) != 0)
        m_ids_of_watch.erase(event.wd);
    return sizeof(event) + event.len;
}

void file_events_t::dispatch()
{
    std::array<char, 16384> events = {};
    for (;;) {
        const ssize_t size = posix::retry_interrupted(
            [&] { return ::read(m_queue.get(), events.data(), events.size()); });
        if (size <= 0)
            return;
        for (std::size_t begin = 0; begin < static_cast<std::size_t>(size);)
            begin += dispatch_first(events.data() + begin);
    }
}

void file_events_t::wait(int other, std::chrono::milliseconds time) const
{
    std::array<pollfd, 2> inputs = {{{m_queue.get(), POLLIN, 0}, {other, POLLIN, 0}}};
    poll(inputs.data(), inputs.size(), static_cast<int>(time.count()));
}

} // namespace velmolog

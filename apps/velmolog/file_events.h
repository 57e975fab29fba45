#pragma once

#include "open_file.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace velmolog
{

/// Reports changes of files and folders by inotify. On a system without it, or if the user's
/// watches are used up, nothing is reported: callers must also look at intervals.
class file_events_t
{
public:
    /// Receives the event's mask, and in a folder the name of the file.
    typedef std::function<void(std::uint32_t mask, const std::string& name)> on_event_t;
    /// Identifies a callback, 0 for none.
    typedef std::uint64_t id_t;

    file_events_t();

    /// Calls back after each change of the open file, under whichever name. Returns 0 if it cannot
    /// be watched.
    id_t watch_file(const descriptor_t& file, on_event_t on_event);
    /// Calls back if a file in the folder is created, removed or renamed, and with an empty name if
    /// this ends. Returns 0 if it cannot be watched.
    id_t watch_folder(const std::string& path, on_event_t on_event);
    /// Ends the calls. Does nothing for 0.
    void end(id_t id);

    /// Calls back for the events that have occurred. A callback must not watch or end anything.
    void dispatch();
    /// Waits for an event, for input on the other descriptor or for the end of the time.
    void wait(int other, std::chrono::milliseconds time) const;

private:
    id_t watch(const std::string& path, std::uint32_t mask, on_event_t on_event);
    void call_all(int watch, std::uint32_t mask, const std::string& name);
    std::size_t dispatch_first(const char* events);

    descriptor_t m_queue;
    id_t m_last_id = 0;
    // Two logs in one folder, or two names of one file, have the same watch.
    std::multimap<int, id_t> m_ids_of_watch;
    std::map<id_t, on_event_t> m_callbacks;
};

} // namespace velmolog

#include "watched_folder.h"

#include <sys/inotify.h>

#include <filesystem>

namespace velmolog
{
namespace
{

std::string folder_of(const std::string& log)
{
    const std::string folder = std::filesystem::path(log).parent_path().string();
    return folder.empty() ? "." : folder;
}

} // namespace

watched_folder_t::watched_folder_t(const std::string& log, file_events_t& events)
    : m_folder(folder_of(log)), m_name(std::filesystem::path(log).filename().string()),
      m_copy_name(m_name + ".tmp"), m_events(events)
{
    renew();
}

watched_folder_t::~watched_folder_t()
{
    m_events.end(m_watch);
}

// Without events, the copy counts that was there at the last look.
void watched_folder_t::renew()
{
    if (m_is_lost) {
        m_has_begun_beside_copy = m_has_copy;
        m_has_copy = is_copy_there();
    }
    const file_state_t folder = state_of(m_folder);
    if (!m_is_lost && folder.is_same_file(m_watched))
        return;
    m_events.end(m_watch);
    m_watch = m_events.watch_folder(
        m_folder, [this](std::uint32_t mask, const std::string& name) { on_event(mask, name); });
    m_watched = folder;
    m_is_lost = m_watch == 0;
}

void watched_folder_t::on_event(std::uint32_t mask, const std::string& name)
{
    const bool is_created = (mask & (IN_CREATE | IN_MOVED_TO)) != 0;
    if (name == m_copy_name) {
        m_has_copy_changed = true;
        m_has_copy = is_created;
    } else if (name == m_name && is_created) {
        m_has_begun_beside_copy = m_has_copy;
    }
    if ((mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0)
        m_is_lost = true;
}

bool watched_folder_t::is_copy_there() const
{
    return state_of(m_folder + "/" + m_copy_name).size >= 0;
}

bool watched_folder_t::has_seen_copy() const
{
    return m_has_copy_changed || is_copy_there();
}

} // namespace velmolog

#include "followed_log.h"

#include "carried_form.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace velmolog
{
namespace
{

// Not all file systems report changes.
constexpr std::chrono::seconds max_pause(1);

// A removed file occupies its space until it is closed.
const std::size_t max_files = 5;

} // namespace

followed_log_t::followed_log_t(const std::string& path, file_events_t& events)
    : m_path(path), m_events(events), m_folder(path, events)
{}

bool followed_log_t::read(std::vector<entry_t>& entries)
{
    for (const file_ptr_t& file : m_files)
        if (read_file(*file, entries))
            return true;
    drop_complete_files();
    m_folder.renew();
    watch_folder_of_target();
    return open_next_file();
}

bool followed_log_t::read_file(followed_file_t& file, std::vector<entry_t>& entries)
{
    const bool is_current = &file == m_files.back().get();
    const followed_file_t::result_t result = file.read(is_current && has_copy_changed(), entries);
    if (result == followed_file_t::result_t::replaced)
        return is_current && resolve_replacement(file);
    if (is_current)
        forget_copy();
    return result == followed_file_t::result_t::more;
}

bool followed_log_t::has_seen_copy() const
{
    return m_folder.has_seen_copy() || (m_target_folder && m_target_folder->has_seen_copy());
}

bool followed_log_t::has_copy_changed() const
{
    return m_folder.has_copy_changed() || (m_target_folder && m_target_folder->has_copy_changed());
}

void followed_log_t::forget_copy()
{
    m_folder.forget_copy();
    if (m_target_folder)
        m_target_folder->forget_copy();
}

// A start that rewrites a log creates its copy first. The system reports that before the change
// that led here, unless it does not report changes, as on network file systems. Then the messages
// are compared. Returns whether the file can be read at once.
bool followed_log_t::resolve_replacement(followed_file_t& file)
{
    if (file.reader().go_back_before_damage())
        return true;
    m_events.dispatch();
    bool is_rewritten = has_seen_copy();
    if (!is_rewritten && !file.is_notified() && file.reader().first()) {
        const auto first = first_message(file.file());
        if (!first && state_of(file.file()).size > 0)
            return false;
        is_rewritten = first && is_carried_form(*file.reader().first(), *first);
    }
    file.reader().begin_again(is_rewritten ? file.reader().carried() : 0);
    forget_copy();
    return true;
}

void followed_log_t::drop_complete_files()
{
    while (m_files.size() > 1 && (m_files.front()->is_complete() || m_files.size() > max_files)) {
        m_has_damage = m_has_damage || m_files.front()->reader().has_damage();
        m_files.pop_front();
    }
}

// A log that is missing is created from the copy, if there is one.
bool followed_log_t::open_next_file()
{
    const file_state_t at_path = state_of(m_path);
    if (at_path.size < 0 || (!m_files.empty() && m_files.back()->state().is_same_file(at_path)))
        return false;
    descriptor_t opened = open_regular_file(m_path);
    if (!opened.is_open())
        return false;
    auto file = std::make_unique<followed_file_t>(m_path, std::move(opened), m_events);
    m_events.dispatch();
    if (!m_files.empty() && m_folder.has_begun_beside_copy())
        file->reader().begin_again(m_files.back()->reader().carried());
    m_files.push_back(std::move(file));
    return true;
}

void followed_log_t::watch_folder_of_target()
{
    std::error_code error;
    const std::string target = std::filesystem::canonical(m_path, error).string();
    if (error || target == m_target)
        return;
    m_target = target;
    const std::string lexical = std::filesystem::absolute(m_path, error).lexically_normal();
    m_target_folder.reset();
    if (error || lexical != target)
        m_target_folder = std::make_unique<watched_folder_t>(target, m_events);
}

std::chrono::steady_clock::time_point followed_log_t::next_look() const
{
    const auto now = std::chrono::steady_clock::now();
    auto next = now + max_pause;
    for (const file_ptr_t& file : m_files)
        if (file->next_look() > now)
            next = std::min(next, file->next_look());
    return next;
}

bool followed_log_t::has_damage() const
{
    return m_has_damage || std::any_of(m_files.begin(), m_files.end(), [](const file_ptr_t& file) {
               return file->reader().has_damage();
           });
}

} // namespace velmolog

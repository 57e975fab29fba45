#pragma once

#include "file_events.h"
#include "open_file.h"

#include <cstdint>
#include <string>

namespace velmolog
{

/// The folder of a log. Notices the copy that a recorder's start creates beside a log that it
/// rewrites, see docs/log_format.md.
class watched_folder_t
{
public:
    /// The events must outlive the object.
    watched_folder_t(const std::string& log, file_events_t& events);
    watched_folder_t(const watched_folder_t&) = delete;
    watched_folder_t& operator=(const watched_folder_t&) = delete;
    ~watched_folder_t();

    /// Watches the folder that the path leads to now. Call it from time to time.
    void renew();

    /// Returns whether the copy exists, or was there since forget_copy(), as far as the events were
    /// dispatched.
    bool has_seen_copy() const;
    /// Returns whether the copy was there when the log was created. Then the log is written from
    /// it.
    bool has_begun_beside_copy() const { return m_has_begun_beside_copy; }
    /// Returns whether the copy was created or removed since forget_copy().
    bool has_copy_changed() const { return m_has_copy_changed; }
    void forget_copy() { m_has_copy_changed = false; }

private:
    bool is_copy_there() const;
    void on_event(std::uint32_t mask, const std::string& name);

    std::string m_folder;
    std::string m_name;
    std::string m_copy_name;
    file_events_t& m_events;
    file_events_t::id_t m_watch = 0;
    file_state_t m_watched;
    bool m_is_lost = true;
    bool m_has_copy = false; ///< after the events so far
    bool m_has_begun_beside_copy = false;
    bool m_has_copy_changed = false;
};

} // namespace velmolog

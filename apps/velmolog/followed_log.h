#pragma once

#include "entry.h"
#include "file_events.h"
#include "followed_file.h"
#include "watched_folder.h"

#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace velmolog
{

/// A path at which there is a log, or one file after the other.
///
/// If another file appears at the path, the earlier one is read to its end first, and then for as
/// long as its recorder has it open.
class followed_log_t
{
public:
    /// The events must outlive the object.
    followed_log_t(const std::string& path, file_events_t& events);

    /// Appends the next messages. Returns whether more can be read at once.
    bool read(std::vector<entry_t>& entries);
    /// Returns when to read again, although nothing is reported.
    std::chrono::steady_clock::time_point next_look() const;
    /// Returns whether any damage was read.
    bool has_damage() const;

private:
    typedef std::unique_ptr<followed_file_t> file_ptr_t;

    bool read_file(followed_file_t& file, std::vector<entry_t>& entries);
    bool has_seen_copy() const;
    bool has_copy_changed() const;
    void forget_copy();
    bool resolve_replacement(followed_file_t& file);
    void drop_complete_files();
    bool open_next_file();
    void watch_folder_of_target();

    std::string m_path;
    file_events_t& m_events;
    watched_folder_t m_folder;
    std::unique_ptr<watched_folder_t> m_target_folder; ///< if the path is a link
    std::string m_target;
    std::deque<file_ptr_t> m_files; ///< oldest first; the last one is or was at the path
    bool m_has_damage = false;      ///< of files that are no longer followed
};

} // namespace velmolog

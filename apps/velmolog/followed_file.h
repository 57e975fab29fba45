#pragma once

#include "entry.h"
#include "file_events.h"
#include "open_file.h"
#include "stable_reader.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace velmolog
{

/// An open log that is read if it has changed.
class followed_file_t
{
public:
    typedef stable_reader_t::result_t result_t;

    /// The log's name is for the entries. The events must outlive the object.
    followed_file_t(std::string log, descriptor_t file, file_events_t& events);
    followed_file_t(const followed_file_t&) = delete;
    followed_file_t& operator=(const followed_file_t&) = delete;
    ~followed_file_t();

    /// Appends the next messages, if the file can have any.
    result_t read(bool is_thorough, std::vector<entry_t>& entries);

    /// Its messages are read only by read(). The next one reads even if the file has not changed.
    stable_reader_t& reader();
    const stable_reader_t& reader() const { return m_reader; }
    const descriptor_t& file() const { return m_file; }
    /// Returns the state in which the file was read.
    const file_state_t& state() const { return m_state; }

    /// See stable_reader_t.
    std::chrono::steady_clock::time_point next_look() const { return m_reader.next_look(); }
    /// Returns whether the system has reported a change since the last read that was not replaced.
    bool is_notified() const { return m_is_notified; }
    /// Returns whether nothing more is expected: the root has ended, the recorder has closed the
    /// file, or nothing has changed for long. Also if the last read found that it was replaced.
    bool is_complete() const;

private:
    void on_event(std::uint32_t mask);

    descriptor_t m_file;
    stable_reader_t m_reader;
    file_events_t& m_events;
    file_events_t::id_t m_watch;
    file_state_t m_state;
    std::chrono::steady_clock::time_point m_last_change = std::chrono::steady_clock::now();
    bool m_is_settled = false; ///< A change would change the state.
    bool m_is_notified = false;
    bool m_is_replaced = false;
    bool m_is_closed = false;
};

} // namespace velmolog

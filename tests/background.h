#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <thread>
#include <utility>

/// Runs an action in a thread of its own. The destructor waits for its end.
class background_t
{
public:
    explicit background_t(std::function<void()> action)
        : m_thread([this, action = std::move(action)] {
              action();
              m_end.set_value();
          })
    {}
    background_t(const background_t&) = delete;
    background_t& operator=(const background_t&) = delete;
    ~background_t() { m_thread.join(); }

    /// Returns false after a while if the action waits for something.
    bool ends() const { return ends_within(std::chrono::seconds(20)); }
    /// Returns whether the action waits. Takes that while to return true.
    bool waits() const { return !ends_within(std::chrono::milliseconds(200)); }

private:
    bool ends_within(std::chrono::milliseconds time) const
    {
        return m_has_ended.wait_for(time) == std::future_status::ready;
    }

    std::promise<void> m_end;
    std::future<void> m_has_ended = m_end.get_future();
    std::thread m_thread;
};

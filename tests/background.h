#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <thread>
#include <utility>

/// A thread for one action. The destructor waits for its end.
class background_t
{
public:
    background_t() = default;
    background_t(const background_t&) = delete;
    background_t& operator=(const background_t&) = delete;
    ~background_t()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    /// Starts the action. Has no effect if one was started before.
    void start(std::function<void()> action)
    {
        if (!m_thread.joinable())
            m_thread = std::thread([this, action = std::move(action)] {
                action();
                m_end.set_value();
            });
    }

    bool has_started() const { return m_thread.joinable(); }
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

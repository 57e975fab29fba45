#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace velmolog
{

/// Writes to standard error: messages, and on a terminal the progress after the first second.
class diagnostics_t
{
public:
    /// Without progress if the output itself shows it.
    explicit diagnostics_t(bool has_progress);
    diagnostics_t(const diagnostics_t&) = delete;
    diagnostics_t& operator=(const diagnostics_t&) = delete;
    ~diagnostics_t();

    /// Writes "velmolog: TEXT", with its control characters escaped.
    void report(const std::string& text);

    /// Begins to count what is read of a log; `size` is 0 if it is not known.
    void begin(const std::string& log, std::uint64_t size);
    void add_bytes(std::uint64_t count);

private:
    typedef std::chrono::steady_clock steady_clock;

    void show_progress() const;
    void clear_progress();

    bool m_has_progress;
    bool m_is_shown = false;
    std::string m_log;
    std::uint64_t m_size = 0;
    std::uint64_t m_read = 0;
    steady_clock::time_point m_next;
};

} // namespace velmolog

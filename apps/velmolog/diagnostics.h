#pragma once

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>

namespace velmolog
{

/// Writes to standard error: messages, and on a terminal the progress after the first second.
class diagnostics_t
{
public:
    /// Without progress if the output itself shows it. The output, if there is one, must outlive
    /// the object.
    explicit diagnostics_t(bool has_progress, std::ostream* output = nullptr);
    diagnostics_t(const diagnostics_t&) = delete;
    diagnostics_t& operator=(const diagnostics_t&) = delete;
    ~diagnostics_t();

    /// Writes "velmolog: TEXT", with its control characters escaped, after the output so far.
    void report(const std::string& text);

    /// Begins to count what is read of a log; `size` is 0 if it is not known.
    void begin(const std::string& log, std::uint64_t size);
    void add_bytes(std::uint64_t count);

    /// Writes the output so far, before a time in which nothing is written.
    void flush_output();

private:
    typedef std::chrono::steady_clock clock_t;

    void show_progress() const;
    void clear_progress();

    bool m_has_progress;
    std::ostream* m_output; ///< null without an output
    bool m_is_shown = false;
    std::string m_log;
    std::uint64_t m_size = 0;
    std::uint64_t m_read = 0;
    clock_t::time_point m_next;
};

} // namespace velmolog

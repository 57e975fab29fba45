#include "diagnostics.h"

#include "common/escape_controls.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace velmolog
{
namespace
{

constexpr std::chrono::seconds first_pause(1);
constexpr std::chrono::milliseconds later_pause(200);
constexpr std::uint64_t bytes_of_megabyte = 1000000;
constexpr std::uint64_t all_percent = 100;

} // namespace

diagnostics_t::diagnostics_t(bool has_progress, std::ostream* output)
    : m_has_progress(has_progress && isatty(STDERR_FILENO) != 0), m_output(output),
      m_next(clock_t::now() + first_pause)
{}

diagnostics_t::~diagnostics_t()
{
    clear_progress();
}

void diagnostics_t::report(const std::string& text)
{
    flush_output();
    clear_progress();
    std::cerr << "velmolog: " + app_common::escape_controls(text) + "\n";
}

void diagnostics_t::begin(const std::string& log, std::uint64_t size)
{
    m_log = app_common::escape_controls(log);
    m_size = size;
    m_read = 0;
}

void diagnostics_t::add_bytes(std::uint64_t count)
{
    m_read += count;
    if (!m_has_progress || clock_t::now() < m_next)
        return;
    show_progress();
    m_is_shown = true;
    m_next = clock_t::now() + later_pause;
}

void diagnostics_t::flush_output()
{
    if (m_output)
        m_output->flush();
}

void diagnostics_t::show_progress() const
{
    std::string text = "\r\x1B[K" + m_log + ": ";
    if (m_size != 0)
        text += std::to_string(std::min(m_read * all_percent / m_size, all_percent)) + " %";
    else
        text += std::to_string(m_read / bytes_of_megabyte) + " MB";
    std::cerr << text << std::flush;
}

void diagnostics_t::clear_progress()
{
    if (m_is_shown)
        std::cerr << "\r\x1B[K" << std::flush;
    m_is_shown = false;
}

} // namespace velmolog

#include "terminal_progress.h"

#include <cstdio>
#include <utility>

namespace audit
{

terminal_progress_t::terminal_progress_t(bool is_shown, std::function<bool()> is_canceled)
    : m_is_shown(is_shown), m_is_canceled(std::move(is_canceled))
{}

void terminal_progress_t::set_percent(int percent)
{
    if (!m_is_shown)
        return;
    std::fprintf(stderr, "\r%3d %%", percent);
    m_is_on_line = true;
}

bool terminal_progress_t::is_canceled() const
{
    return m_is_canceled();
}

void terminal_progress_t::hide()
{
    if (m_is_on_line)
        std::fputs("\r     \r", stderr);
    m_is_on_line = false;
}

} // namespace audit

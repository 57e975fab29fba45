/// @file
#pragma once

#include <velmo2/progress.h>

#include <functional>

namespace audit
{

/// The host's progress object: shows a percentage on standard error until it is hidden.
class terminal_progress_t : public velmo2::IProgress
{
public:
    /// Shows nothing unless `is_shown`. `is_canceled` returns whether the operation is to end.
    terminal_progress_t(bool is_shown, std::function<bool()> is_canceled);

    void set_percent(int percent) override;
    bool is_canceled() const override;

    /// Erases the percentage from the line, so that other text can be written there. The next
    /// percentage is shown again.
    void hide();

private:
    const bool m_is_shown;
    const std::function<bool()> m_is_canceled;
    bool m_is_on_line = false;
};

} // namespace audit

#pragma once

#include "candidate.h"
#include "entry_format.h"
#include "options.h"
#include "presenter.h"

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

namespace velmolog
{

/// Writes messages in the form that the options ask for.
class entry_sink_t
{
public:
    /// All parameters must outlive the object.
    entry_sink_t(const options_t& options, const presenter_t& presenter, std::ostream& output);

    /// Writes the message, or keeps it if only the last ones are wanted. Returns whether more
    /// messages are wanted.
    bool add(candidate_t& candidate);
    /// Writes the rest.
    void finish();

private:
    void keep(candidate_t& candidate);
    void write(candidate_t& candidate);

    const presenter_t& m_presenter;
    std::ostream& m_output;
    std::unique_ptr<entry_format_t> m_format;
    std::optional<std::size_t> m_first;
    std::optional<std::size_t> m_last;
    std::size_t m_count = 0;    ///< messages that were written
    std::deque<entry_t> m_kept; ///< without their messages: most are not among the last
};

} // namespace velmolog

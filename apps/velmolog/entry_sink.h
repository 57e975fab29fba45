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
    /// A message that may be one of the last. Most are not, so it is not yet decoded.
    struct kept_t
    {
        entry_t entry; ///< without its message
        std::string element;
    };

    void keep(candidate_t& candidate);
    void write(candidate_t& candidate);

    const presenter_t& m_presenter;
    std::ostream& m_output;
    std::unique_ptr<entry_format_t> m_format;
    std::optional<std::size_t> m_first;
    std::optional<std::size_t> m_last;
    std::size_t m_count = 0; ///< messages that were written
    std::deque<kept_t> m_kept;
};

} // namespace velmolog

#pragma once

#include "candidate.h"
#include "entry_format.h"
#include "options.h"
#include "window.h"

#include <memory>
#include <ostream>
#include <string>

namespace velmolog
{

/// Writes messages in the form that the options ask for.
class entry_sink_t
{
public:
    /// Both parameters must outlive the object.
    entry_sink_t(const options_t& options, std::ostream& output);

    /// Writes the message, or keeps it if only the last ones are wanted. Returns whether more
    /// messages are wanted.
    bool add(candidate_t& candidate);
    /// Writes the rest.
    void finish();

private:
    void write(const std::string& text);

    std::ostream& m_output;
    std::unique_ptr<entry_format_t> m_format;
    bool m_has_messages = false;
    window_t<std::string> m_window;
};

} // namespace velmolog

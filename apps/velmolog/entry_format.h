#pragma once

#include "candidate.h"
#include "options.h"

#include <memory>
#include <string>

namespace velmolog
{

/// The form in which messages are written.
class entry_format_t
{
public:
    entry_format_t() = default;
    entry_format_t(const entry_format_t&) = delete;
    entry_format_t& operator=(const entry_format_t&) = delete;
    virtual ~entry_format_t() = default;

    /// Returns the text before the first message.
    virtual std::string beginning() const { return std::string(); }
    /// Returns the text of one message, with a line break.
    virtual std::string text(candidate_t& candidate) const = 0;
    /// Returns the text after all messages, or instead of them.
    virtual std::string end(bool /*has_messages*/) const { return std::string(); }
};

/// Returns the form that the option names. Lines have colors if they are wanted.
std::unique_ptr<entry_format_t> make_entry_format(format_t format, bool has_colors);

/// Returns the message as a line, without a line break.
std::string line_of(candidate_t& candidate, bool has_colors);

/// Returns whether standard output is a terminal that shows colors, and the user wants them.
bool can_show_colors();

// The text of a log around its messages.
extern const char log_beginning[];
extern const char log_end[];
extern const char empty_log[];

/// Returns the element as a line of a log.
std::string log_line_of(std::string_view element);

} // namespace velmolog

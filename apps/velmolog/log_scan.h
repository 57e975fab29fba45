#pragma once

#include "log_input.h"

#include <velmoext1/log_reader.h>

#include <functional>
#include <optional>
#include <string>

namespace velmolog
{

/// Damage in a log, or its missing end.
struct fault_t
{
    enum class kind_t
    {
        markup,
        end_tag,
        character,
        reference,
        encoding,
        limit,
        truncated, ///< text without its end is before other messages
        no_end     ///< as while a log is recorded, or after its recorder was killed
    };
    kind_t kind = kind_t::markup;
    velmoext_1_4_8::log_reader_t::position_t begin;
    bool has_text = true; ///< false if the log lacks nothing but its end

    /// Returns whether a log that is being recorded cannot have this fault.
    bool is_damage() const { return kind != kind_t::no_end; }
    /// Returns the kind for programs, such as "end_tag".
    std::string name() const;
    /// Returns the kind in words.
    std::string reason() const;
};

/// Reads a log to its end, message by message.
class log_scan_t
{
public:
    typedef std::function<void(const fault_t&)> on_fault_t;

    /// Throws log_error_t. All parameters must outlive the object, except the name.
    log_scan_t(const std::string& log, diagnostics_t& diagnostics, on_fault_t on_fault);

    /// Moves to the next message, and calls the function for each fault before it. Returns false
    /// after the last message and the last fault. Throws log_error_t.
    bool next();

    const std::string& log() const { return m_log; }
    /// Returns the reader, which is at the message.
    velmoext_1_4_8::log_reader_t& reader() { return m_reader; }

private:
    bool handle(velmoext_1_4_8::log_reader_t::result_t result);
    void handle_unfinished();
    void report_unfinished(fault_t::kind_t kind);

    std::string m_log;
    log_input_t m_input;
    velmoext_1_4_8::log_reader_t m_reader;
    on_fault_t m_on_fault;
    std::optional<fault_t> m_unfinished; ///< text without its end that was skipped
    bool m_is_at_end = false;
};

} // namespace velmolog

#pragma once

#include "diagnostics.h"

#include <cstddef>
#include <stdexcept>
#include <string>

namespace velmolog
{

/// A log cannot be read.
class log_error_t : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The bytes of a log: a file, a pipe, or standard input.
class log_input_t
{
public:
    /// Waits for the other end of a pipe. Throws log_error_t if the path is anything else.
    log_input_t(const std::string& log, diagnostics_t& diagnostics);
    log_input_t(const log_input_t&) = delete;
    log_input_t& operator=(const log_input_t&) = delete;
    ~log_input_t();

    /// Copies the next bytes, at most `size`. Returns their number, 0 at the end. Throws
    /// log_error_t.
    std::size_t read(char* bytes, std::size_t size);

    /// Returns whether what was read so far begins like XML, or is empty.
    bool can_be_xml() const;

private:
    void check_kind();

    std::string m_log;
    int m_descriptor;
    bool m_is_file = false;
    std::string m_beginning; ///< the first bytes
    diagnostics_t& m_diagnostics;
};

} // namespace velmolog

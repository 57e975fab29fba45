#pragma once

#include "storage/file_descriptor.h"

#include <basekit2/path.h>

#include <cstddef>
#include <cstdint>

namespace velmoext_1_4_8
{

/// Receives the bytes of a log from libxml2's writer and writes them into the log's file.
///
/// A start writes the old messages again. Bytes that equal those of the log need not be written, so
/// they are compared first.
class log_output_t
{
public:
    /// The file must outlive the output.
    explicit log_output_t(file_descriptor_t& file) : m_file(file) {}
    log_output_t(const log_output_t&) = delete;
    log_output_t& operator=(const log_output_t&) = delete;
    ~log_output_t() = default;

    /// Writes into the file, see file_descriptor_t::write(). During a comparison nothing is
    /// written.
    void write(const char* bytes, std::size_t count);

    /// Compares what is written from now on with the log, from its beginning. Returns false if the
    /// log cannot be read.
    bool begin_comparison(const basekit2::path_t& log);
    /// The log in a comparison.
    const file_descriptor_t& log() const { return m_log; }
    /// Returns whether everything that was written is the beginning of the log; true without a
    /// comparison.
    bool is_in_log() const { return m_equal_size == m_size; }
    /// Returns whether the log is the beginning of what was written.
    bool has_whole_log() const { return m_equal_size >= m_log.size(); }
    /// Writes into the file again.
    void end_comparison();
    /// Closes the log in a comparison, in a child of fork().
    void close_in_child() { m_log.close_in_child(); }

    /// Ends the comparison and truncates the log after the equal bytes. Returns false on failure.
    bool continue_in_log();

private:
    file_descriptor_t& m_file;
    file_descriptor_t m_log; ///< to read; open during a comparison
    std::int64_t m_size = 0;
    std::int64_t m_equal_size = 0;
};

/// Returns whether the bytes of both files are the same.
bool have_same_bytes(const file_descriptor_t& one, const file_descriptor_t& other);

} // namespace velmoext_1_4_8

#pragma once

#include "storage/file_descriptor.h"

#include <basekit2/path.h>

namespace velmoext_1_4_8
{

/// The copy of an old log. A start that has to rewrite the log creates the copy before, and removes
/// it when all its messages are in the log again. If the process is killed in between, the copy
/// remains, as the only complete log.
class log_copy_t
{
public:
    /// The state of the file at the copy's path.
    enum class state_t
    {
        missing,
        left,   ///< created by a killed process of this user
        foreign ///< another user's, not a regular file, or a log that is being recorded
    };

    /// The copy is in the log's folder. Its name is the log's, followed by ".tmp". If the file
    /// system refuses so long a name, it is the beginning of the log's name, a checksum and ".tmp".
    explicit log_copy_t(const basekit2::path_t& log);
    log_copy_t(const log_copy_t&) = delete;
    log_copy_t& operator=(const log_copy_t&) = delete;
    /// Removes the copy if make() created it, unless keep() or remove() was called.
    ~log_copy_t();

    const basekit2::path_t& path() const { return m_path; }
    state_t state() const;

    /// Copies the log, for its owner only. The copy appears whole or not at all and replaces
    /// nothing. Returns false on failure.
    bool make();
    /// Opens the copy to read, and locks it against recorders. Returns false on failure.
    bool open();
    bool is_open() const { return m_file.get() != -1; }
    /// The copy that open() opened.
    const file_descriptor_t& file() const { return m_file; }

    /// Keeps the copy for a later start, unless remove() is called.
    void keep() { m_is_temporary = false; }
    /// Returns false if the copy is still there.
    bool remove();

private:
    basekit2::path_t m_log;
    basekit2::path_t m_path;
    file_descriptor_t m_file;
    bool m_is_temporary = false;
};

} // namespace velmoext_1_4_8

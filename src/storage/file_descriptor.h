#pragma once

#include <basekit2/path.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/types.h>

namespace velmoext_1_4_8
{

/// Returns the bytes by which the system knows the path.
std::string native_name(const basekit2::path_t& path);

/// Owns one open file. Only regular files are opened, so that nothing blocks; descriptors do not
/// outlive an exec.
class file_descriptor_t
{
public:
    file_descriptor_t() = default;
    file_descriptor_t(const file_descriptor_t&) = delete;
    file_descriptor_t& operator=(const file_descriptor_t&) = delete;
    ~file_descriptor_t();

    /// Closes what is open and opens the path, to read or to write. Returns whether it is open.
    ///
    /// A file that is opened to write is locked until it is closed or the process ends: no other
    /// process or storage can open it to write. Readers are not kept out. On a file system without
    /// locks it is opened without one. A missing file is created, for its owner only. Its content
    /// is unchanged until truncate(). If another program has a lease on the file, this waits for
    /// its end, as any open() does.
    bool open(bool is_reading, const basekit2::path_t& path);
    /// Does nothing if nothing is open.
    void close();
    /// Closes the descriptor in a child of fork(), which shares the lock with its parent. Does not
    /// release the lock or remove an empty file.
    void close_in_child();
    /// Returns the system's descriptor, -1 if nothing is open.
    int get() const { return m_descriptor; }

    /// Locks a file that is open to read, so that it cannot be opened to write until it is closed
    /// or the process ends. Returns false if it is open to write, or if the path no longer leads to
    /// it.
    bool share(const basekit2::path_t& path);
    /// Returns whether the file is locked: some file systems have no locks.
    bool is_locked() const { return m_is_locked; }

    /// Returns whether the path leads to the open file.
    bool is_named(const basekit2::path_t& path) const;

    /// Keeps a file that open() created. Otherwise close() removes it if it is empty.
    void keep() { m_is_created = false; }

    /// Returns the size in bytes, -1 if nothing is open.
    std::int64_t size() const;

    /// Truncates or extends the file to the size; write() continues there. A failure counts as one
    /// of write(): returns false.
    bool truncate(std::int64_t size);

    /// Writes all bytes after those that were written before. After the first failure nothing more
    /// is written until the next open(). Fails if nothing is open, and in a child of the process
    /// that opened the file: two writers would overwrite each other's text.
    void write(const char* bytes, std::size_t count);
    /// Returns whether truncate() or write() failed since the last open().
    bool has_failed() const { return m_has_failed; }

    /// Reads bytes from the offset on and returns their number, which is less than the count if the
    /// file ends or the read fails.
    std::size_t read(std::int64_t offset, char* bytes, std::size_t count) const;

private:
    bool lock(int operation, const basekit2::path_t& path);
    bool is_of_this_process() const;
    void remove_if_created() const;

    int m_descriptor = -1;
    pid_t m_process = -1;      ///< which opened it
    bool m_is_created = false; ///< by open()
    bool m_is_locked = false;
    bool m_has_failed = false;
    std::int64_t m_offset = 0; ///< of the next write()
};

} // namespace velmoext_1_4_8

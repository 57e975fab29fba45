#pragma once

#include <basekit2/path.h>

#include <cstddef>
#include <cstdint>
#include <sys/types.h>

namespace velmoext_1_4_8
{

/// Owns one open file. Only regular files are opened, so that nothing blocks; descriptors do not
/// outlive an exec.
class file_descriptor_t
{
public:
    file_descriptor_t() = default;
    file_descriptor_t(const file_descriptor_t&) = delete;
    file_descriptor_t& operator=(const file_descriptor_t&) = delete;
    ~file_descriptor_t();

    /// Closes what is open and opens the path, to read or to write. Answers whether it is open.
    ///
    /// A file that is opened to write is locked until it is closed or the process ends: no other
    /// process or storage can open it to write. Readers are not kept out. On a file system without
    /// locks it is opened without one. A missing file is created, for its owner only. Its content
    /// is unchanged until truncate(). If another program has a lease on the file, this waits for
    /// its end, as any open() does.
    bool open(bool is_reading, const basekit2::path_t& path);
    /// Harmless when nothing is open.
    void close();
    /// The same in a child of fork(), which shares the lock with its parent: keeps the lock and an
    /// empty file.
    void close_in_child();
    /// The system's descriptor, -1 when nothing is open.
    int get() const { return m_descriptor; }

    /// Locks a file that is open to read, so that it cannot be opened to write until it is closed
    /// or the process ends. Returns false if it is open to write, or if the path no longer leads to
    /// it.
    bool share(const basekit2::path_t& path);
    /// Whether the file system has locks, so that the file is this process's alone or shared.
    bool is_locked() const { return m_is_locked; }

    /// Whether the path, too, leads to the file that is open.
    bool is_named(const basekit2::path_t& path) const;

    /// Keeps a file that open() created. Otherwise close() removes it if it is empty.
    void keep() { m_is_created = false; }

    /// In bytes; -1 when nothing is open.
    std::int64_t size() const;

    /// Makes the file end at the offset, which becomes the one for write(). Returns false if the
    /// file refuses, as a write that fails.
    bool truncate(std::int64_t size);

    /// Writes all of it after what was written before. After the first failure nothing more is
    /// written until the next open(). Fails if nothing is open, and in a child of the process that
    /// opened the file: two writers would overwrite each other's text.
    void write(const char* bytes, std::size_t count);
    /// Whether truncate() or write() failed since the last open().
    bool has_failed() const { return m_has_failed; }

    /// Reads that many bytes from the offset on; fewer when the file ends or the read fails.
    /// Returns how many.
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

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
    /// Who opens to write has the file alone among those who do so, in this process and others,
    /// until it is closed or the process ends; readers are not kept out. A missing file is made,
    /// for its owner only. What stands in it stays until truncate(), so that it can be saved first.
    bool open(bool is_reading, const basekit2::path_t& path);
    /// Harmless when nothing is open.
    void close();
    /// The system's descriptor, -1 when nothing is open.
    int get() const { return m_descriptor; }

    /// Whether the path, too, leads to the file that is open.
    bool is_named(const basekit2::path_t& path) const;

    /// In bytes; -1 when nothing is open.
    std::int64_t size() const;

    /// Makes the file empty. False where it refuses, as a write that fails.
    bool truncate();

    /// Writes all of it. After the first failure nothing more is written until the next open():
    /// what stands in the file then ends where it broke off. Writing to nothing open fails, and so
    /// it does in a child that was forked meanwhile: two that write would tear each other's text.
    void write(const char* bytes, std::size_t count);
    /// Whether truncate() or write() failed since the last open().
    bool has_failed() const { return m_has_failed; }

    /// Reads that many bytes from the offset on; fewer when the file ends or the read fails.
    /// Returns how many.
    std::size_t read(std::int64_t offset, char* bytes, std::size_t count) const;

private:
    bool is_of_this_process() const;

    int m_descriptor = -1;
    pid_t m_process = -1; ///< which opened it
    bool m_has_failed = false;
};

} // namespace velmoext_1_4_8

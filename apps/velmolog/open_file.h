#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace velmolog
{

/// Owns a descriptor of the system, -1 for none.
class descriptor_t
{
public:
    explicit descriptor_t(int number = -1) : m_number(number) {}
    descriptor_t(const descriptor_t&) = delete;
    descriptor_t& operator=(const descriptor_t&) = delete;
    descriptor_t& operator=(descriptor_t&&) = delete;
    descriptor_t(descriptor_t&& other) noexcept;
    ~descriptor_t();

    bool is_open() const { return m_number != -1; }
    int get() const { return m_number; }

private:
    int m_number;
};

/// Opens a regular file to read. Never waits, and never opens anything else: a device can act when
/// it is opened.
descriptor_t open_regular_file(const std::string& path);

/// The attributes of a file by which a change of it is noticed.
struct file_state_t
{
    dev_t device = 0;
    ino_t inode = 0;
    std::int64_t size = -1; ///< -1 if there is no such file
    timespec modified = {};

    bool is_same_file(const file_state_t& other) const
    {
        return size >= 0 && other.size >= 0 && device == other.device && inode == other.inode;
    }
    bool operator==(const file_state_t& other) const;
};

file_state_t state_of(const descriptor_t& file);
file_state_t state_of(const std::string& path);

/// Copies bytes from the offset on. Returns their number, which is less than `size` at the end of
/// the file and on failure.
std::size_t read_at(int descriptor, std::int64_t offset, char* bytes, std::size_t size);

} // namespace velmolog

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace velmolog
{

/// The beginning of a file as it was read. Remembers some of its bytes and a checksum of all.
class checked_bytes_t
{
public:
    void add(std::string_view bytes);
    std::int64_t size() const { return m_size; }

    /// Returns whether the file's first and last bytes of these are still the same. Takes the same
    /// time for every size.
    bool has_same_ends(int descriptor) const;
    /// Returns whether all bytes are still the same.
    bool is_same(int descriptor) const;

private:
    std::int64_t m_size = 0;
    std::string m_head;
    std::string m_block; ///< the last bytes, fewer than a block
    std::size_t m_last_checksum = 0;
    std::size_t m_checksum = 0; ///< of all whole blocks
};

/// Reads a file's bytes one after the other, and detects that bytes that it has read were replaced.
class read_bytes_t
{
public:
    /// The descriptor must outlive the object.
    explicit read_bytes_t(int descriptor) : m_descriptor(descriptor) {}

    /// Copies the next bytes. Returns their number, 0 at the end of the file.
    std::size_t read(char* bytes, std::size_t size);

    /// Keeps no more than a checksum of the bytes before the offset.
    void release(std::int64_t offset);
    std::int64_t released() const { return m_released.size(); }
    std::size_t unreleased() const { return m_bytes.size(); }
    /// Returns the offset of the next read().
    std::int64_t read_size() const
    {
        return released() + static_cast<std::int64_t>(m_bytes.size());
    }
    const checked_bytes_t& released_bytes() const { return m_released; }
    /// Continues to read after these bytes, which were released before.
    void go_back(const checked_bytes_t& bytes);

    /// Returns whether the file's bytes that are not released are as they were read.
    bool has_same_unreleased() const;
    /// Returns whether those that are released are the same, see checked_bytes_t.
    bool has_same_released(bool is_thorough) const;

private:
    int m_descriptor;
    checked_bytes_t m_released;
    std::string m_bytes; ///< read after the released ones
};

} // namespace velmolog

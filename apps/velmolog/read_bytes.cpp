#include "read_bytes.h"

#include "open_file.h"

#include <algorithm>
#include <array>
#include <functional>

namespace velmolog
{
namespace
{

const std::size_t block_size = 16384;

typedef std::array<char, block_size> block_t;

bool has_bytes(int descriptor, std::int64_t offset, std::string_view bytes)
{
    block_t block; // NOLINT(cppcoreguidelines-pro-type-member-init): only read bytes are used
    for (std::size_t begin = 0; begin < bytes.size(); begin += block_size) {
        const std::string_view wanted = bytes.substr(begin, block_size);
        const std::int64_t from = offset + static_cast<std::int64_t>(begin);
        const std::size_t size = read_at(descriptor, from, block.data(), wanted.size());
        if (std::string_view(block.data(), size) != wanted)
            return false;
    }
    return true;
}

std::size_t checksum_of(std::string_view bytes)
{
    return std::hash<std::string_view>()(bytes);
}

} // namespace

void checked_bytes_t::add(std::string_view bytes)
{
    m_size += static_cast<std::int64_t>(bytes.size());
    m_head += bytes.substr(0, block_size - m_head.size());
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, block_size - m_block.size());
        m_block += part;
        bytes.remove_prefix(part.size());
        if (m_block.size() < block_size)
            continue;
        m_last_checksum = checksum_of(m_block);
        m_checksum = m_checksum * 31 + m_last_checksum;
        m_block.clear();
    }
}

bool checked_bytes_t::has_same_ends(int descriptor) const
{
    const std::int64_t whole = m_size - static_cast<std::int64_t>(m_block.size());
    if (!has_bytes(descriptor, 0, m_head) || !has_bytes(descriptor, whole, m_block))
        return false;
    if (whole == 0)
        return true;
    block_t block; // NOLINT(cppcoreguidelines-pro-type-member-init): only read bytes are used
    const std::int64_t last = whole - static_cast<std::int64_t>(block_size);
    return read_at(descriptor, last, block.data(), block_size) == block_size &&
           checksum_of(std::string_view(block.data(), block_size)) == m_last_checksum;
}

bool checked_bytes_t::is_same(int descriptor) const
{
    checked_bytes_t now;
    block_t block; // NOLINT(cppcoreguidelines-pro-type-member-init): only read bytes are used
    while (now.m_size < m_size) {
        const auto wanted = std::min<std::int64_t>(m_size - now.m_size, block_size);
        const std::size_t size =
            read_at(descriptor, now.m_size, block.data(), static_cast<std::size_t>(wanted));
        if (size == 0)
            return false;
        now.add(std::string_view(block.data(), size));
    }
    return now.m_checksum == m_checksum && now.m_block == m_block;
}

std::size_t read_bytes_t::read(char* bytes, std::size_t size)
{
    const std::size_t count = read_at(m_descriptor, read_size(), bytes, size);
    m_bytes.append(bytes, count);
    return count;
}

void read_bytes_t::release(std::int64_t offset)
{
    if (offset <= released())
        return;
    const auto size = static_cast<std::size_t>(offset - released());
    m_released.add(std::string_view(m_bytes).substr(0, size));
    m_bytes.erase(0, size);
}

void read_bytes_t::go_back(const checked_bytes_t& bytes)
{
    if (&bytes != &m_released)
        m_released = bytes;
    m_bytes.clear();
}

bool read_bytes_t::has_same_unreleased() const
{
    return has_bytes(m_descriptor, released(), m_bytes);
}

bool read_bytes_t::has_same_released(bool is_thorough) const
{
    return is_thorough ? m_released.is_same(m_descriptor) : m_released.has_same_ends(m_descriptor);
}

} // namespace velmolog

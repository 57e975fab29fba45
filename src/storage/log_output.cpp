#include "storage/log_output.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace velmoext_1_4_8
{
namespace
{

const std::size_t chunk = 16384;

typedef std::array<char, chunk> buffer_t;

// The number of bytes that are in the file from the offset on. Stops at the first chunk that
// differs: only a caller whose bytes are all there, or that reaches the end of the file, needs the
// exact number.
std::size_t count_equal(const file_descriptor_t& file, std::int64_t offset, const char* bytes,
                        std::size_t count)
{
    buffer_t read; // NOLINT(cppcoreguidelines-pro-type-member-init): only read bytes are used
    for (std::size_t equal = 0; equal < count;) {
        const std::size_t wanted = std::min(chunk, count - equal);
        const std::size_t size =
            file.read(offset + static_cast<std::int64_t>(equal), read.data(), wanted);
        if (std::memcmp(bytes + equal, read.data(), size) != 0)
            return equal;
        equal += size;
        if (size < wanted)
            return equal;
    }
    return count;
}

} // namespace

void log_output_t::write(const char* bytes, std::size_t count)
{
    if (m_log.get() == -1)
        return m_file.write(bytes, count);
    if (is_in_log())
        m_equal_size += static_cast<std::int64_t>(count_equal(m_log, m_size, bytes, count));
    m_size += static_cast<std::int64_t>(count);
}

bool log_output_t::begin_comparison(const basekit2::path_t& log)
{
    end_comparison();
    return m_log.open(true, log) && m_file.is_named(log);
}

void log_output_t::end_comparison()
{
    m_log.close();
    m_size = 0;
    m_equal_size = 0;
}

bool log_output_t::continue_in_log()
{
    const std::int64_t size = m_equal_size;
    end_comparison();
    return m_file.truncate(size);
}

bool have_same_bytes(const file_descriptor_t& one, const file_descriptor_t& other)
{
    buffer_t read; // NOLINT(cppcoreguidelines-pro-type-member-init): only read bytes are used
    const std::int64_t size = one.size();
    if (size != other.size())
        return false;
    for (std::int64_t offset = 0; offset < size;) {
        const std::size_t count = one.read(offset, read.data(), read.size());
        if (count == 0 || count_equal(other, offset, read.data(), count) != count)
            return false;
        offset += static_cast<std::int64_t>(count);
    }
    return true;
}

} // namespace velmoext_1_4_8

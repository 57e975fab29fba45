#include "output_buffer.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace velmolog
{
namespace
{

constexpr std::size_t buffer_size = 65536;

} // namespace

bool output_error_t::is_closed_pipe() const
{
    return code() == std::errc::broken_pipe;
}

output_buffer_t::output_buffer_t(int descriptor) : m_descriptor(descriptor), m_bytes(buffer_size)
{
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
}

output_buffer_t::int_type output_buffer_t::overflow(int_type byte)
{
    write_all();
    if (!traits_type::eq_int_type(byte, traits_type::eof()))
        sputc(traits_type::to_char_type(byte));
    return traits_type::not_eof(byte);
}

int output_buffer_t::sync()
{
    write_all();
    return 0;
}

void output_buffer_t::write_all()
{
    const char* next = pbase();
    const char* const end = pptr();
    // If it fails, the bytes are dropped, so that no destructor tries again.
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    while (next != end) {
        const ssize_t written = write(m_descriptor, next, static_cast<std::size_t>(end - next));
        if (written >= 0)
            next += written;
        else if (errno != EINTR)
            throw output_error_t(errno, std::generic_category(), "the output cannot be written");
    }
}

} // namespace velmolog

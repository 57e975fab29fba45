#include "output.h"

#include <unistd.h>

#include <cerrno>

namespace audit
{
namespace
{

const std::size_t buffer_size = 65536;

} // namespace

output_t::output_t(int descriptor)
    : m_descriptor(descriptor), m_max_buffered(::isatty(descriptor) != 0 ? 0 : buffer_size)
{}

void output_t::write(const std::string& text)
{
    m_buffer += text;
    if (m_buffer.size() > m_max_buffered)
        flush();
}

void output_t::flush()
{
    for (std::size_t begin = 0; begin != m_buffer.size() && !m_error;)
        begin += write_some(begin);
    m_buffer.clear();
}

std::size_t output_t::write_some(std::size_t begin)
{
    const ssize_t written = ::write(m_descriptor, m_buffer.data() + begin, m_buffer.size() - begin);
    if (written >= 0)
        return static_cast<std::size_t>(written);
    if (errno != EINTR)
        m_error = std::error_code(errno, std::generic_category());
    return 0;
}

} // namespace audit

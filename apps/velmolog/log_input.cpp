#include "log_input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace velmolog
{
namespace
{

constexpr std::size_t beginning_size = 64;
const std::string byte_order_mark = "\xEF\xBB\xBF";

bool is_standard_input(const std::string& log)
{
    return log == "-";
}

log_error_t error_of(const std::string& log, int error)
{
    const std::string name = is_standard_input(log) ? "standard input" : log;
    return log_error_t(name + ": " + std::generic_category().message(error));
}

} // namespace

log_input_t::log_input_t(const std::string& log, diagnostics_t& diagnostics)
    : m_log(log),
      m_descriptor(is_standard_input(log) ? STDIN_FILENO : open(log.c_str(), O_RDONLY | O_CLOEXEC)),
      m_diagnostics(diagnostics)
{
    if (m_descriptor == -1)
        throw error_of(m_log, errno);
    try {
        check_kind();
    } catch (const log_error_t&) {
        if (!is_standard_input(m_log))
            close(m_descriptor);
        throw;
    }
}

log_input_t::~log_input_t()
{
    if (!is_standard_input(m_log))
        close(m_descriptor);
}

void log_input_t::check_kind()
{
    struct stat status = {};
    if (fstat(m_descriptor, &status) != 0)
        throw error_of(m_log, errno);
    m_is_file = S_ISREG(status.st_mode);
    if (S_ISDIR(status.st_mode))
        throw error_of(m_log, EISDIR);
    // A device can be without end.
    if (!m_is_file && !S_ISFIFO(status.st_mode) && !is_standard_input(m_log))
        throw log_error_t(m_log + ": neither a file nor a pipe");
    m_diagnostics.begin(m_log, m_is_file ? static_cast<std::uint64_t>(status.st_size) : 0);
}

std::size_t log_input_t::read(char* bytes, std::size_t size)
{
    if (!m_is_file)
        m_diagnostics.flush_output();
    for (;;) {
        const ssize_t count = ::read(m_descriptor, bytes, size);
        if (count >= 0) {
            if (m_beginning.size() < beginning_size)
                m_beginning.append(bytes,
                                   std::min(static_cast<std::size_t>(count), beginning_size));
            m_diagnostics.add_bytes(static_cast<std::uint64_t>(count));
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR)
            throw error_of(m_log, errno);
    }
}

bool log_input_t::can_be_xml() const
{
    const bool has_mark = m_beginning.compare(0, byte_order_mark.size(), byte_order_mark) == 0;
    const std::size_t first =
        m_beginning.find_first_not_of(" \t\r\n", has_mark ? byte_order_mark.size() : 0);
    return first == std::string::npos || m_beginning[first] == '<';
}

} // namespace velmolog

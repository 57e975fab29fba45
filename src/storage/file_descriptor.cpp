#include "storage/file_descriptor.h"

#include <rova/strings.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmoext_1_4_8
{
namespace
{

const int common_flags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
const mode_t owner_only = S_IRUSR | S_IWUSR;

template <typename Call>
auto retry_interrupted(const Call& call)
{
    auto answer = call();
    while (answer == -1 && errno == EINTR)
        answer = call();
    return answer;
}

bool is_regular(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

// Opening a device can do something by itself, so it is not even tried.
bool is_something_else(const std::string& name)
{
    struct stat status = {};
    return stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

bool leads_to(const std::string& name, int descriptor)
{
    struct stat named = {};
    struct stat opened = {};
    return stat(name.c_str(), &named) == 0 && fstat(descriptor, &opened) == 0 &&
           named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

// The lock belongs to this opening of the file, not to the process: a reader in this process that
// closes the file leaves it alone.
bool lock(const std::string& name, int descriptor)
{
    return retry_interrupted([&] { return flock(descriptor, LOCK_EX | LOCK_NB); }) == 0 &&
           leads_to(name, descriptor);
}

int open_file(const std::string& name, int flags)
{
    return retry_interrupted(
        [&] { return ::open(name.c_str(), flags | common_flags, owner_only); });
}

} // namespace

file_descriptor_t::~file_descriptor_t()
{
    close();
}

bool file_descriptor_t::open(bool is_reading, const basekit2::path_t& path)
{
    close();
    m_has_failed = false;
    const std::string name = ROVA_2_18::strings::utf16_to_utf8(path.as_string(false));
    if (name.find('\0') != std::string::npos || is_something_else(name))
        return false;
    m_descriptor = open_file(name, is_reading ? O_RDONLY : O_WRONLY | O_CREAT);
    if (m_descriptor == -1)
        return false;
    m_process = getpid();
    if (!is_regular(m_descriptor) || (!is_reading && !lock(name, m_descriptor)))
        close();
    return m_descriptor >= 0;
}

void file_descriptor_t::close()
{
    // A child that was forked meanwhile shares the lock: it must not take it away, nor keep it
    // where it has not come to its exec yet.
    if (m_descriptor != -1 && is_of_this_process())
        flock(m_descriptor, LOCK_UN);
    if (m_descriptor != -1)
        ::close(m_descriptor);
    m_descriptor = -1;
}

bool file_descriptor_t::is_of_this_process() const
{
    return m_process == getpid();
}

bool file_descriptor_t::is_named(const basekit2::path_t& path) const
{
    return leads_to(ROVA_2_18::strings::utf16_to_utf8(path.as_string(false)), m_descriptor);
}

std::int64_t file_descriptor_t::size() const
{
    struct stat status = {};
    return fstat(m_descriptor, &status) == 0 ? status.st_size : -1;
}

bool file_descriptor_t::truncate()
{
    m_has_failed = retry_interrupted([&] { return ftruncate(m_descriptor, 0); }) != 0;
    return !m_has_failed;
}

void file_descriptor_t::write(const char* bytes, std::size_t count)
{
    m_has_failed = m_has_failed || !is_of_this_process();
    while (count > 0 && !m_has_failed) {
        const ssize_t written =
            retry_interrupted([&] { return ::write(m_descriptor, bytes, count); });
        m_has_failed = written <= 0;
        if (m_has_failed)
            return;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

std::size_t file_descriptor_t::read(std::int64_t offset, char* bytes, std::size_t count) const
{
    std::size_t complete = 0;
    while (complete < count) {
        const ssize_t added = retry_interrupted([&] {
            return pread(m_descriptor, bytes + complete, count - complete,
                         offset + static_cast<std::int64_t>(complete));
        });
        if (added <= 0)
            break;
        complete += static_cast<std::size_t>(added);
    }
    return complete;
}

} // namespace velmoext_1_4_8

#include "storage/file_descriptor.h"

#include "file_calls.h"

#include <rova/strings.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

// Opening a device can do something by itself, so it is not even tried.
bool is_not_regular_file(const std::string& name)
{
    struct stat status = {};
    return stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

bool is_name_of(const char* name, int descriptor)
{
    struct stat named = {};
    struct stat opened = {};
    return stat(name, &named) == 0 && fstat(descriptor, &opened) == 0 &&
           named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

bool has_no_locks(int error)
{
    return error == ENOSYS || error == EOPNOTSUPP || error == ENOLCK;
}

// O_NONBLOCK fails on a file with a lease. Only regular files have one, and only those are waited
// for, whatever the name leads to by now.
int open_leased(const std::string& name, int flags)
{
    const int found = posix::open_file(name.c_str(), O_PATH);
    if (found == -1)
        return -1;
    const std::string again = "/proc/self/fd/" + std::to_string(found);
    const int opened =
        posix::is_regular(found) ? posix::open_file(again.c_str(), flags & ~O_CREAT) : -1;
    close(found);
    return opened;
}

int open_without_waiting(const std::string& name, int flags)
{
    const int opened = posix::open_file(name.c_str(), flags | O_NONBLOCK);
    return opened == -1 && errno == EWOULDBLOCK ? open_leased(name, flags) : opened;
}

} // namespace

std::string native_name(const basekit2::path_t& path)
{
    return ROVA_2_18::strings::utf16_to_utf8(path.as_string(false));
}

file_descriptor_t::~file_descriptor_t()
{
    close();
}

bool file_descriptor_t::open(bool is_reading, const basekit2::path_t& path)
{
    close();
    m_process = getpid();
    m_is_created = false;
    m_is_locked = false;
    m_has_failed = false;
    m_offset = 0;
    const std::string name = native_name(path);
    if (name.find('\0') != std::string::npos || is_not_regular_file(name))
        return false;
    m_descriptor = open_without_waiting(name, is_reading ? O_RDONLY : O_WRONLY);
    if (m_descriptor == -1 && errno == ENOENT && !is_reading) {
        m_descriptor = open_without_waiting(name, O_WRONLY | O_CREAT);
        m_is_created = true;
    }
    if (m_descriptor == -1)
        return false;
    if (!posix::is_regular(m_descriptor) || (!is_reading && !lock(LOCK_EX, path))) {
        keep();
        close();
    }
    return m_descriptor >= 0;
}

void file_descriptor_t::close()
{
    if (m_descriptor == -1)
        return;
    // A child that was created meanwhile shares the lock: it must not release it, and it must not
    // keep it until its exec either.
    if (is_of_this_process()) {
        remove_if_created();
        flock(m_descriptor, LOCK_UN);
    }
    close_in_child();
}

void file_descriptor_t::close_in_child()
{
    const int descriptor = std::exchange(m_descriptor, -1);
    if (descriptor != -1)
        ::close(descriptor);
}

// Uses the name that the system knows, because that of the path may be a link. By now another file
// can have that name. Allocates nothing, because a destructor calls it.
void file_descriptor_t::remove_if_created() const
{
    std::array<char, 32> link = {};
    std::array<char, PATH_MAX> name = {};
    if (!m_is_created || size() != 0)
        return;
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", m_descriptor);
    if (readlink(link.data(), name.data(), name.size() - 1) != -1 &&
        is_name_of(name.data(), m_descriptor))
        unlink(name.data());
}

bool file_descriptor_t::is_of_this_process() const
{
    return m_process == getpid();
}

// The lock belongs to this opening of the file, not to the process: a reader in this process that
// closes the file leaves it alone.
bool file_descriptor_t::lock(int operation, const basekit2::path_t& path)
{
    m_is_locked =
        posix::retry_interrupted([&] { return flock(m_descriptor, operation | LOCK_NB); }) == 0;
    return (m_is_locked || has_no_locks(errno)) && is_named(path);
}

bool file_descriptor_t::share(const basekit2::path_t& path)
{
    return lock(LOCK_SH, path);
}

bool file_descriptor_t::is_named(const basekit2::path_t& path) const
{
    return is_name_of(native_name(path).c_str(), m_descriptor);
}

std::int64_t file_descriptor_t::size() const
{
    struct stat status = {};
    return fstat(m_descriptor, &status) == 0 ? status.st_size : -1;
}

bool file_descriptor_t::truncate(std::int64_t size)
{
    m_has_failed = posix::retry_interrupted([&] { return ftruncate(m_descriptor, size); }) != 0;
    m_offset = size;
    return !m_has_failed;
}

void file_descriptor_t::write(const char* bytes, std::size_t count)
{
    if (m_has_failed || !is_of_this_process()) {
        m_has_failed = true;
        return;
    }
    std::size_t complete = 0;
    m_has_failed = !posix::write_at(m_descriptor, m_offset, bytes, count, complete);
    m_offset += static_cast<std::int64_t>(complete);
}

std::size_t file_descriptor_t::read(std::int64_t offset, char* bytes, std::size_t count) const
{
    std::size_t complete = 0;
    posix::read_at(m_descriptor, offset, bytes, count, complete);
    return complete;
}

} // namespace velmoext_1_4_8

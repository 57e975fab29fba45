// Replaces the C library's calls that change or read a file. Each injects the requested fault
// first, then does what the original does.

#include "system_faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>

namespace
{

std::atomic<const faults_t*> current_faults{nullptr};
std::atomic<bool> is_other_user{false};
std::atomic<std::size_t> max_read{SIZE_MAX};
std::atomic<std::size_t> max_written{SIZE_MAX};

bool fails(const char* call, int descriptor = -1)
{
    const faults_t* const faults = current_faults.load();
    const int error = faults != nullptr ? (*faults)(call, descriptor) : 0;
    if (error != 0)
        errno = error;
    return error != 0;
}

} // namespace

faults_scope_t::faults_scope_t(faults_t faults) : m_faults(std::move(faults))
{
    current_faults = &m_faults;
}

faults_scope_t::~faults_scope_t()
{
    current_faults = nullptr;
}

other_user_scope_t::other_user_scope_t()
{
    is_other_user = true;
}

other_user_scope_t::~other_user_scope_t()
{
    is_other_user = false;
}

short_io_scope_t::short_io_scope_t(std::size_t read, std::size_t written)
{
    max_read = read;
    max_written = written;
}

short_io_scope_t::~short_io_scope_t()
{
    max_read = max_written = SIZE_MAX;
}

#define REPLACES_SYSTEM_CALL extern "C" __attribute__((visibility("default")))

REPLACES_SYSTEM_CALL int open(const char* file, int oflag, ...)
{
    mode_t mode = 0;
    if ((oflag & (O_CREAT | __O_TMPFILE)) != 0) {
        va_list rest;
        va_start(rest, oflag);
        mode = va_arg(rest, mode_t);
        va_end(rest);
    }
    if (fails((oflag & __O_TMPFILE) != 0 ? "open unnamed" : "open"))
        return -1;
    return static_cast<int>(syscall(SYS_openat, AT_FDCWD, file, oflag, mode));
}

// Declared under another name, since the system's header uses a keyword for mkostemp()'s first
// parameter.
REPLACES_SYSTEM_CALL int make_temporary(char* name, int flags) __asm__("mkostemp");

int make_temporary(char* name, int flags)
{
    typedef int (*make_temporary_t)(char*, int);
    const auto real = reinterpret_cast<make_temporary_t>(dlsym(RTLD_NEXT, "mkostemp"));
    if (!fails("mkostemp"))
        return real(name, flags);
    // The C library leaves the name like this after a failure of the system.
    std::fill_n(name + std::string(name).size() - 6, 6, 'f');
    return -1;
}

REPLACES_SYSTEM_CALL ssize_t pread(int fd, void* buf, std::size_t nbytes, off_t offset)
{
    if (fails("pread", fd))
        return -1;
    return syscall(SYS_pread64, fd, buf, std::min(nbytes, max_read.load()), offset);
}

REPLACES_SYSTEM_CALL ssize_t write(int fd, const void* buf, std::size_t n)
{
    if (fails("write", fd))
        return -1;
    return syscall(SYS_write, fd, buf, std::min(n, max_written.load()));
}

REPLACES_SYSTEM_CALL ssize_t pwrite(int fd, const void* buf, std::size_t n, off_t offset)
{
    if (fails("write", fd))
        return -1;
    return syscall(SYS_pwrite64, fd, buf, std::min(n, max_written.load()), offset);
}

REPLACES_SYSTEM_CALL int fchmod(int fd, mode_t mode) noexcept
{
    return fails("fchmod", fd) ? -1 : static_cast<int>(syscall(SYS_fchmod, fd, mode));
}

/// Closes the descriptor in any case, as Linux does.
REPLACES_SYSTEM_CALL int close(int fd)
{
    const bool fail = fails("close", fd);
    const int error = errno;
    const int result = static_cast<int>(syscall(SYS_close, fd));
    if (fail)
        errno = error;
    return fail ? -1 : result;
}

REPLACES_SYSTEM_CALL int linkat(int fromfd, const char* from, int tofd, const char* to,
                                int flags) noexcept
{
    if (fails("linkat"))
        return -1;
    return static_cast<int>(syscall(SYS_linkat, fromfd, from, tofd, to, flags));
}

REPLACES_SYSTEM_CALL int link(const char* from, const char* to) noexcept
{
    if (fails("link"))
        return -1;
    return static_cast<int>(syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}

REPLACES_SYSTEM_CALL int renameat2(int fromfd, const char* from, int tofd, const char* to,
                                   unsigned int flags) noexcept
{
    if (fails("renameat2"))
        return -1;
    return static_cast<int>(syscall(SYS_renameat2, fromfd, from, tofd, to, flags));
}

REPLACES_SYSTEM_CALL int rename(const char* from, const char* to) noexcept
{
    if (fails("rename"))
        return -1;
    return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

REPLACES_SYSTEM_CALL int unlink(const char* name) noexcept
{
    return fails("unlink") ? -1 : static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, name, 0));
}

// Declared under another name, since the system's header has a structure named flock.
REPLACES_SYSTEM_CALL int lock_file(int fd, int operation) __asm__("flock");

int lock_file(int fd, int operation)
{
    return fails("flock", fd) ? -1 : static_cast<int>(syscall(SYS_flock, fd, operation));
}

REPLACES_SYSTEM_CALL int ftruncate(int fd, off_t length) noexcept
{
    return fails("ftruncate", fd) ? -1 : static_cast<int>(syscall(SYS_ftruncate, fd, length));
}

REPLACES_SYSTEM_CALL uid_t geteuid() noexcept
{
    return static_cast<uid_t>(syscall(SYS_geteuid)) + (is_other_user ? 1 : 0);
}

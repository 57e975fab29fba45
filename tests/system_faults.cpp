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

std::atomic<const faults_t*> faults_in_place{nullptr};
std::atomic<bool> is_other_user{false};
std::atomic<std::size_t> most_read{SIZE_MAX};
std::atomic<std::size_t> most_written{SIZE_MAX};

bool fails(const char* call, int descriptor = -1)
{
    const faults_t* const faults = faults_in_place.load();
    const int error = faults != nullptr ? (*faults)(call, descriptor) : 0;
    if (error != 0)
        errno = error;
    return error != 0;
}

} // namespace

with_faults::with_faults(faults_t faults) : m_faults(std::move(faults))
{
    faults_in_place = &m_faults;
}

with_faults::~with_faults()
{
    faults_in_place = nullptr;
}

with_other_user::with_other_user()
{
    is_other_user = true;
}

with_other_user::~with_other_user()
{
    is_other_user = false;
}

with_short_pieces::with_short_pieces(std::size_t read, std::size_t written)
{
    most_read = read;
    most_written = written;
}

with_short_pieces::~with_short_pieces()
{
    most_read = most_written = SIZE_MAX;
}

#define IN_PLACE_OF_THE_SYSTEMS extern "C" __attribute__((visibility("default")))

IN_PLACE_OF_THE_SYSTEMS int open(const char* file, int oflag, ...)
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
IN_PLACE_OF_THE_SYSTEMS int make_temporary(char* name, int flags) __asm__("mkostemp");

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

IN_PLACE_OF_THE_SYSTEMS ssize_t pread(int fd, void* buf, std::size_t nbytes, off_t offset)
{
    if (fails("pread", fd))
        return -1;
    return syscall(SYS_pread64, fd, buf, std::min(nbytes, most_read.load()), offset);
}

IN_PLACE_OF_THE_SYSTEMS ssize_t write(int fd, const void* buf, std::size_t n)
{
    if (fails("write", fd))
        return -1;
    return syscall(SYS_write, fd, buf, std::min(n, most_written.load()));
}

IN_PLACE_OF_THE_SYSTEMS ssize_t pwrite(int fd, const void* buf, std::size_t n, off_t offset)
{
    if (fails("write", fd))
        return -1;
    return syscall(SYS_pwrite64, fd, buf, std::min(n, most_written.load()), offset);
}

IN_PLACE_OF_THE_SYSTEMS int fchmod(int fd, mode_t mode) noexcept
{
    return fails("fchmod", fd) ? -1 : static_cast<int>(syscall(SYS_fchmod, fd, mode));
}

/// Closes the descriptor in any case, as Linux does.
IN_PLACE_OF_THE_SYSTEMS int close(int fd)
{
    const bool fail = fails("close", fd);
    const int error = errno;
    const int answer = static_cast<int>(syscall(SYS_close, fd));
    if (fail)
        errno = error;
    return fail ? -1 : answer;
}

IN_PLACE_OF_THE_SYSTEMS int linkat(int fromfd, const char* from, int tofd, const char* to,
                                   int flags) noexcept
{
    if (fails("linkat"))
        return -1;
    return static_cast<int>(syscall(SYS_linkat, fromfd, from, tofd, to, flags));
}

IN_PLACE_OF_THE_SYSTEMS int link(const char* from, const char* to) noexcept
{
    if (fails("link"))
        return -1;
    return static_cast<int>(syscall(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0));
}

IN_PLACE_OF_THE_SYSTEMS int renameat2(int fromfd, const char* from, int tofd, const char* to,
                                      unsigned int flags) noexcept
{
    if (fails("renameat2"))
        return -1;
    return static_cast<int>(syscall(SYS_renameat2, fromfd, from, tofd, to, flags));
}

IN_PLACE_OF_THE_SYSTEMS int rename(const char* from, const char* to) noexcept
{
    if (fails("rename"))
        return -1;
    return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

IN_PLACE_OF_THE_SYSTEMS int unlink(const char* name) noexcept
{
    return fails("unlink") ? -1 : static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, name, 0));
}

// Declared under another name, since the system's header has a structure named flock.
IN_PLACE_OF_THE_SYSTEMS int lock_file(int fd, int operation) __asm__("flock");

int lock_file(int fd, int operation)
{
    return fails("flock", fd) ? -1 : static_cast<int>(syscall(SYS_flock, fd, operation));
}

IN_PLACE_OF_THE_SYSTEMS int ftruncate(int fd, off_t length) noexcept
{
    return fails("ftruncate", fd) ? -1 : static_cast<int>(syscall(SYS_ftruncate, fd, length));
}

IN_PLACE_OF_THE_SYSTEMS uid_t geteuid() noexcept
{
    return static_cast<uid_t>(syscall(SYS_geteuid)) + (is_other_user ? 1 : 0);
}

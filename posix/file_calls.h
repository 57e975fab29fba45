#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

/// The system's calls on files that the library and the host's basekit2 share. Not installed:
/// compiled into both.
namespace posix
{

/// Read and write permission for the owner of a file only.
constexpr mode_t owner_only = S_IRUSR | S_IWUSR;

/// Repeats a call that returns -1 for as long as a signal interrupts it.
template <typename Call>
auto retry_interrupted(const Call& call)
{
    auto answer = call();
    while (answer == -1 && errno == EINTR)
        answer = call();
    return answer;
}

/// Opens a file. Returns a descriptor that does not outlive an exec, or -1 with errno set. A
/// terminal does not become that of the process. A file that is created can be read by its owner
/// only.
inline int open_file(const char* name, int flags)
{
    return retry_interrupted([&] { return open(name, flags | O_CLOEXEC | O_NOCTTY, owner_only); });
}

/// Whether the descriptor is open on a regular file.
inline bool is_regular(int descriptor)
{
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// Reads count bytes from the offset, and fewer at the end of the file. Returns false on a read
/// error. Sets complete to the number of bytes that were read, in either case.
inline bool read_at(int descriptor, off_t offset, char* bytes, std::size_t count,
                    std::size_t& complete)
{
    for (complete = 0; complete < count;) {
        const ssize_t added = retry_interrupted([&] {
            return pread(descriptor, bytes + complete, count - complete,
                         offset + static_cast<off_t>(complete));
        });
        if (added <= 0)
            return added == 0;
        complete += static_cast<std::size_t>(added);
    }
    return true;
}

/// Writes the bytes at the offset. Returns false on a write error. Sets complete to the number of
/// bytes that were written, in either case.
inline bool write_at(int descriptor, off_t offset, const char* bytes, std::size_t count,
                     std::size_t& complete)
{
    for (complete = 0; complete < count;) {
        const ssize_t added = retry_interrupted([&] {
            return pwrite(descriptor, bytes + complete, count - complete,
                          offset + static_cast<off_t>(complete));
        });
        if (added <= 0)
            return false;
        complete += static_cast<std::size_t>(added);
    }
    return true;
}

} // namespace posix

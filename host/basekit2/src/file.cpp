#include <basekit2/file.h>

#include "file_calls.h"
#include "file_content.h"
#include "native_name.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace basekit2
{

namespace
{

constexpr std::size_t part_size = 65536;

enum class outcome_t
{
    created,
    failed,
    not_supported
};

class descriptor_t
{
public:
    explicit descriptor_t(int number) : m_number(number) {}
    descriptor_t(const descriptor_t&) = delete;
    descriptor_t& operator=(const descriptor_t&) = delete;
    ~descriptor_t()
    {
        if (is_open())
            close(m_number);
    }

    bool is_open() const { return m_number != -1; }
    int number() const { return m_number; }

private:
    int m_number;
};

/// Opens a file for reading. Does not wait for the writer of a FIFO.
int open_source(const std::wstring& name)
{
    return posix::open_file(native_name(name).c_str(), O_RDONLY | O_NONBLOCK);
}

/// Passes the source's bytes to the callback, with the offset of each part. Returns false on a read
/// error, or when the callback returns false.
template <typename Take>
bool read_parts(int source, const Take& take)
{
    std::array<char, part_size> part = {};
    std::size_t size = part.size();
    for (off_t offset = 0; size == part.size(); offset += static_cast<off_t>(size))
        if (!posix::read_at(source, offset, part.data(), part.size(), size) ||
            !take(offset, part.data(), size))
            return false;
    return true;
}

bool copy_bytes(int source, int target)
{
    return read_parts(source, [=](off_t offset, const char* bytes, std::size_t size) {
        std::size_t complete = 0;
        return posix::write_at(target, offset, bytes, size, complete);
    });
}

bool read_bytes(int source, std::size_t at_most, std::string& read)
{
    return read_parts(source, [&](off_t /*offset*/, const char* bytes, std::size_t size) {
        const bool fits = size <= at_most - read.size();
        if (fits)
            read.append(bytes, size);
        return fits;
    });
}

/// Returns whether closing succeeds. A network file system may report a full disk only then.
bool is_stored(int target)
{
    const int duplicate = fcntl(target, F_DUPFD_CLOEXEC, 0);
    return duplicate != -1 && close(duplicate) == 0;
}

bool fill(int source, int target)
{
    return fchmod(target, posix::owner_only) == 0 && copy_bytes(source, target) &&
           is_stored(target);
}

/// Writes an unnamed file and names it when it is complete. If the process ends before, the system
/// removes the file.
outcome_t copy_unnamed(int source, const std::string& directory, const std::string& to)
{
    const descriptor_t target(posix::open_file(directory.c_str(), O_TMPFILE | O_WRONLY));
    if (!target.is_open())
        return outcome_t::not_supported;
    if (!fill(source, target.number()))
        return outcome_t::failed;
    const std::string unnamed = "/proc/self/fd/" + std::to_string(target.number());
    if (linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, to.c_str(), AT_SYMLINK_FOLLOW) == 0)
        return outcome_t::created;
    return errno == EEXIST ? outcome_t::failed : outcome_t::not_supported;
}

/// Renames a file on a file system without hard links. If renameat2() fails, the destination is
/// checked first: another process can create it after that.
bool rename_without_replacing(const std::string& from, const std::string& to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    struct stat status = {};
    return errno != EEXIST && lstat(to.c_str(), &status) != 0 && errno == ENOENT &&
           rename(from.c_str(), to.c_str()) == 0;
}

/// Renames a file, unless the destination exists. Removes the file on failure.
bool change_name(const std::string& from, const std::string& to)
{
    const bool is_linked = link(from.c_str(), to.c_str()) == 0;
    if (!is_linked && errno != EEXIST && rename_without_replacing(from, to))
        return true;
    unlink(from.c_str());
    return is_linked;
}

/// Copies by way of a temporary file. Its name does not contain the destination's, which may
/// already have the maximum length.
bool copy_named(int source, const std::string& directory, const std::string& to)
{
    std::string name;
    const descriptor_t target(posix::retry_interrupted([&] {
        name = directory + "/.copy-XXXXXX";
        return mkostemp(name.data(), O_CLOEXEC);
    }));
    if (!target.is_open())
        return false;
    if (fill(source, target.number()))
        return change_name(name, to);
    unlink(name.c_str());
    return false;
}

std::string directory_of(const path_t& path)
{
    const std::wstring branch = path.get_branch();
    return branch.empty() ? "." : native_name(branch);
}

} // namespace

content_t read_content(const std::wstring& name, std::size_t at_most, std::string& bytes)
{
    const descriptor_t source(open_source(name));
    const bool is_missing = errno == ENOENT || errno == ENOTDIR;
    if (!source.is_open())
        return is_missing && !holds_zero(name) ? content_t::missing : content_t::failed;
    std::string read;
    if (!posix::is_regular(source.number()) || !read_bytes(source.number(), at_most, read))
        return content_t::failed;
    bytes.swap(read);
    return content_t::read;
}

bool copy_file(const path_t& from, const path_t& to)
{
    const std::string destination = native_name(to.as_string());
    if (destination.empty())
        return false;
    const descriptor_t source(open_source(from.as_string()));
    if (!source.is_open() || !posix::is_regular(source.number()))
        return false;
    const std::string directory = directory_of(to);
    const outcome_t result = copy_unnamed(source.number(), directory, destination);
    // The error for a file system without unnamed files depends on the kernel and the file system.
    // Any other cause makes the second attempt fail as well.
    if (result == outcome_t::not_supported)
        return copy_named(source.number(), directory, destination);
    return result == outcome_t::created;
}

bool read_file(const path_t& path, std::size_t at_most, std::string& bytes)
{
    return read_content(path.as_string(), at_most, bytes) == content_t::read;
}

bool remove_file(const path_t& path)
{
    return unlink(native_name(path.as_string()).c_str()) == 0;
}

} // namespace basekit2

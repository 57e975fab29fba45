#include "open_file.h"

#include "file_calls.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace velmolog
{
namespace
{

file_state_t state_from(const struct stat& status)
{
    file_state_t state;
    state.device = status.st_dev;
    state.inode = status.st_ino;
    state.size = status.st_size;
    state.modified = status.st_mtim;
    return state;
}

} // namespace

descriptor_t::descriptor_t(descriptor_t&& other) noexcept
    : m_number(std::exchange(other.m_number, -1))
{}

descriptor_t::~descriptor_t()
{
    if (is_open())
        close(m_number);
}

descriptor_t open_regular_file(const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return descriptor_t();
    descriptor_t file(posix::open_file(path.c_str(), O_RDONLY | O_NONBLOCK));
    // Another file can have taken the name meanwhile.
    if (file.is_open() && !posix::is_regular(file.get()))
        return descriptor_t();
    return file;
}

bool file_state_t::operator==(const file_state_t& other) const
{
    return is_same_file(other) && size == other.size && modified.tv_sec == other.modified.tv_sec &&
           modified.tv_nsec == other.modified.tv_nsec;
}

file_state_t state_of(const descriptor_t& file)
{
    struct stat status = {};
    return fstat(file.get(), &status) == 0 ? state_from(status) : file_state_t();
}

file_state_t state_of(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? state_from(status) : file_state_t();
}

std::size_t read_at(int descriptor, std::int64_t offset, char* bytes, std::size_t size)
{
    std::size_t complete = 0;
    posix::read_at(descriptor, static_cast<off_t>(offset), bytes, size, complete);
    return complete;
}

} // namespace velmolog

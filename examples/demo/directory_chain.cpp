#include "directory_chain.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

namespace audit
{
namespace
{

// Two are enough: a directory that may be listed but not searched has no way back up through "..",
// nor is there a way down from it.
const std::size_t max_descriptors = 32;

const int opening_flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

struct close_stream_t
{
    void operator()(DIR* stream) const { ::closedir(stream); }
};

typedef std::unique_ptr<DIR, close_stream_t> stream_t;

std::error_code last_error()
{
    return std::error_code(errno, std::generic_category());
}

bool is_entry(const char* name)
{
    return std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0;
}

// Sets errno to 0 first: only errno distinguishes the end of a directory from a failure.
const dirent* next_entry(const stream_t& stream)
{
    errno = 0;
    return ::readdir(stream.get()); // NOLINT(concurrency-mt-unsafe): no two threads share a stream
}

stream_t open_stream(int directory)
{
    descriptor_t copy(::fcntl(directory, F_DUPFD_CLOEXEC, 0));
    stream_t stream(copy.is_open() ? ::fdopendir(copy.get()) : nullptr);
    if (stream)
        copy.release();
    return stream;
}

} // namespace

std::error_code directory_chain_t::open(const std::string& path)
{
    level_t top;
    if (const std::error_code error = open_level(AT_FDCWD, path, 0, top))
        return error;
    m_levels.clear();
    m_levels.push_back(std::move(top));
    return std::error_code();
}

std::error_code directory_chain_t::enter(const std::string& name)
{
    level_t child;
    if (const std::error_code error = open_level(descriptor(), name, O_NOFOLLOW, child))
        return error;
    m_levels.push_back(std::move(child));
    // The topmost directory stays open, since it cannot be opened again through its parent.
    if (m_levels.size() > max_descriptors)
        m_levels[m_levels.size() - max_descriptors].directory = descriptor_t();
    return std::error_code();
}

std::error_code directory_chain_t::leave()
{
    const level_t child = std::move(m_levels.back());
    m_levels.pop_back();
    level_t& parent = m_levels.back();
    const bool is_reached = parent.directory.is_open() ||
                            reopen(parent, child.directory.get(), "..") || reach_from_top();
    return std::error_code(is_reached ? 0 : ESTALE, std::generic_category());
}

std::error_code directory_chain_t::list(std::vector<std::string>& names) const
{
    const stream_t stream = open_stream(descriptor());
    if (!stream)
        return last_error();
    while (const dirent* const entry = next_entry(stream))
        if (is_entry(entry->d_name))
            names.emplace_back(entry->d_name);
    const std::error_code error = last_error();
    std::sort(names.begin(), names.end());
    return error;
}

std::error_code directory_chain_t::open_level(int parent, const std::string& name, int flags,
                                              level_t& level)
{
    descriptor_t directory(::openat(parent, name.c_str(), opening_flags | flags));
    struct stat status = {};
    if (!directory.is_open() || ::fstat(directory.get(), &status) != 0)
        return last_error();
    level = {name, std::move(directory), status.st_dev, status.st_ino};
    return std::error_code();
}

bool directory_chain_t::reopen(level_t& level, int neighbour, const std::string& name)
{
    level_t found;
    if (open_level(neighbour, name, O_NOFOLLOW, found) || found.device != level.device ||
        found.inode != level.inode)
        return false;
    level.directory = std::move(found.directory);
    return true;
}

// Needed if a directory was moved away from its parent during the walk.
bool directory_chain_t::reach_from_top()
{
    level_t reached;
    int parent = m_levels.front().directory.get();
    for (std::size_t depth = 1; depth + 1 < m_levels.size(); ++depth) {
        if (open_level(parent, m_levels[depth].name, O_NOFOLLOW, reached))
            return false;
        parent = reached.directory.get();
    }
    level_t& last = m_levels.back();
    return reopen(last, parent, last.name);
}

} // namespace audit

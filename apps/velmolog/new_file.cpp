#include "new_file.h"

#include "options.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace velmolog
{
namespace
{

usage_error_t exists_error(const std::string& path)
{
    return usage_error_t(path + " exists already, and is not overwritten");
}

std::system_error creation_error(const std::string& path)
{
    return std::system_error(errno, std::generic_category(), path + " cannot be created");
}

bool exists(const std::string& path)
{
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0;
}

/// Creates a file for its owner only, since the content can be confidential.
int create(const std::string& path, std::string& temporary_path)
{
    if (exists(path))
        throw exists_error(path);
    temporary_path = path + ".XXXXXX";
    const int descriptor = mkostemp(temporary_path.data(), O_CLOEXEC);
    if (descriptor == -1)
        throw creation_error(path);
    return descriptor;
}

/// Renames the file, but replaces none. Returns 0 or an error.
int rename_without_replacing(const std::string& from, const std::string& to)
{
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    // Some file systems only have links, others only this operation.
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    if (link(from.c_str(), to.c_str()) != 0)
        return errno;
    unlink(from.c_str());
    return 0;
}

} // namespace

new_file_t::new_file_t(const std::string& path)
    : m_path(path), m_descriptor(create(path, m_temporary_path)), m_buffer(m_descriptor),
      m_stream(&m_buffer)
{
    m_stream.exceptions(std::ios::badbit | std::ios::failbit);
}

new_file_t::~new_file_t()
{
    if (m_descriptor == -1)
        return;
    close(m_descriptor);
    unlink(m_temporary_path.c_str());
}

void new_file_t::finish()
{
    m_stream.flush();
    if (fsync(m_descriptor) != 0 && errno != EINVAL)
        throw output_error_t(errno, std::generic_category(), m_path + " cannot be written");
    const int error = rename_without_replacing(m_temporary_path, m_path);
    if (error == EEXIST)
        throw exists_error(m_path);
    if (error != 0)
        throw output_error_t(error, std::generic_category(), m_path + " cannot be created");
    close(m_descriptor);
    m_descriptor = -1;
}

} // namespace velmolog

#include "storage/directory.h"

#include <rova/strings.h>

#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace velmoext_1_4_8
{

using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;

directory_t directory_t::current()
{
    directory_t directory;
    struct stat status = {};
    if (stat(".", &status) == 0) {
        directory.m_device = status.st_dev;
        directory.m_inode = status.st_ino;
    }
    const std::unique_ptr<char, decltype(&std::free)> name(getcwd(nullptr, 0), &std::free);
    if (name)
        directory.m_name = name.get();
    return directory;
}

basekit2::path_t directory_t::resolve(const basekit2::path_t& path) const
{
    const bool is_absolute = path.as_string(true).compare(0, 1, L"/") == 0;
    if (is_absolute || is_current())
        return path;
    const std::wstring name = utf8_to_utf16(m_name);
    if (m_name.empty() || utf16_to_utf8(name) != m_name)
        return path;
    basekit2::path_t resolved(name);
    resolved.append(path);
    return resolved;
}

bool directory_t::is_current() const
{
    struct stat status = {};
    return stat(".", &status) == 0 && status.st_dev == m_device && status.st_ino == m_inode;
}

} // namespace velmoext_1_4_8

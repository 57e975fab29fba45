#pragma once

#include <basekit2/path.h>

#include <string>
#include <sys/types.h>

namespace velmoext_1_4_8
{

/// A directory of the process, to find a relative path again from another one.
class directory_t
{
public:
    /// No directory.
    directory_t() = default;
    /// Returns the current directory.
    static directory_t current();

    /// Returns the path in this directory. The result is relative if this is the current directory,
    /// or if its name is not known or not UTF-8.
    basekit2::path_t resolve(const basekit2::path_t& path) const;

private:
    bool is_current() const;

    dev_t m_device = 0;
    ino_t m_inode = 0;
    std::string m_name; ///< empty if the directory was removed
};

} // namespace velmoext_1_4_8

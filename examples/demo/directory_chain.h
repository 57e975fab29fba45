/// @file
#pragma once

#include "descriptor.h"

#include <sys/types.h>

#include <string>
#include <system_error>
#include <vector>

namespace audit
{

/// The directories from the top of a tree down to the one where the walk is.
///
/// It works with descriptors, so that neither the length of a path nor a directory that is renamed
/// on the way matters, and holds only a few of them, so that depth does not: a directory whose
/// descriptor was given up is opened again on the way back up, and taken only if it is the same.
class directory_chain_t
{
public:
    /// Begins at this directory; a symbolic link to one will do.
    std::error_code open(const std::string& path);

    /// Goes down into a directory of the current one; where that fails, the current one stays.
    std::error_code enter(const std::string& name);

    /// Goes up to the directory that the current one was entered from. Where that cannot be opened
    /// any more, it is the current one nevertheless, without a descriptor.
    std::error_code leave();

    /// The current directory's descriptor, negative where there is none.
    int descriptor() const { return m_levels.back().directory.get(); }

    /// The names in the current directory, sorted by their bytes. Where reading fails, those that
    /// were read until then.
    std::error_code list(std::vector<std::string>& names) const;

private:
    struct level_t
    {
        std::string name;
        descriptor_t directory;
        dev_t device = 0;
        ino_t inode = 0;
    };

    static std::error_code open_level(int parent, const std::string& name, int flags,
                                      level_t& level);
    static bool reopen(level_t& level, int neighbour, const std::string& name);
    bool reach_from_top();

    std::vector<level_t> m_levels;
};

} // namespace audit

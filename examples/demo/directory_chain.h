/// @file
#pragma once

#include "descriptor.h"

#include <sys/types.h>

#include <string>
#include <system_error>
#include <vector>

namespace audit
{

/// The directories from the top of a tree down to the current one of a walk.
///
/// Uses descriptors, so that neither the length of a path nor a renamed directory matters. Keeps
/// only a few of them open, so that the depth does not matter either. A directory whose descriptor
/// was closed is opened again on the way up, and used only if it is the same.
class directory_chain_t
{
public:
    /// Opens the topmost directory, which can be a symbolic link to one.
    std::error_code open(const std::string& path);

    /// Goes down into a directory of the current one. On failure the current one stays.
    std::error_code enter(const std::string& name);

    /// Goes up to the parent that the current directory was entered from. If it cannot be opened
    /// any more, it is the current one nevertheless, without a descriptor.
    std::error_code leave();

    /// Returns the current directory's descriptor. Returns a negative number if there is none.
    int descriptor() const { return m_levels.back().directory.get(); }

    /// Lists the names in the current directory, sorted by their bytes. If reading fails, the names
    /// that were read before the failure are in the list.
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

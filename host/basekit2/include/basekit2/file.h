/// @file
/// Operations on files. Any thread may call them at any time. They throw std::bad_alloc only.
#pragma once

#include <basekit2/export.h>
#include <basekit2/path.h>

#include <cstddef>
#include <string>

namespace basekit2
{

/// Copies the regular file `from`, or the one that a link points to, to the new file `to`. The copy
/// has read and write permission for its owner only. It appears whole or not at all, even if the
/// process is killed.
///
/// Returns true if this call has created the copy. Returns false, with nothing created, if
/// - something exists at the destination, even a dangling link;
/// - the source is missing, cannot be read, or is not a regular file; this never blocks;
/// - the destination's directory is missing or refuses it;
/// - the disk is full, or the copy exceeds the file-size limit of the process while SIGXFSZ is
///   ignored;
/// - a path is empty or has a zero character.
///
/// On a file system without unnamed files, the copy has the name `.copy-XXXXXX` beside the
/// destination until it is complete. If the process is killed meanwhile, that file remains.
///
/// On a file system without hard links and RENAME_NOREPLACE, a destination that another process
/// creates at the same time is replaced.
BASEKIT2_API bool copy_file(const path_t& from, const path_t& to);

/// Reads a whole regular file, or the one that a link points to. Returns false, with `bytes`
/// unchanged, if it has more than `at_most` bytes, is missing, cannot be read, or is not a regular
/// file. Never blocks.
BASEKIT2_API bool read_file(const path_t& path, std::size_t at_most, std::string& bytes);

/// Removes a file, or anything else except a directory; a link itself, not its target. Returns
/// false, with nothing changed, if the path is a directory, does not exist, cannot be removed, is
/// empty or has a zero character.
BASEKIT2_API bool remove_file(const path_t& path);

} // namespace basekit2

/// @file
/// Copying, reading and removing files. Any thread may call at any time. Nothing throws but for
/// lack of memory, and nothing is printed.
#pragma once

#include <basekit2/export.h>
#include <basekit2/path.h>

#include <cstddef>
#include <string>

namespace basekit2
{

/// Makes the file `to` with the bytes of the regular file `from`; a link to one is followed. The
/// source is read to the end that it has when that is reached. The copy may be read and written by
/// its owner only, whatever the source's permissions and the process's umask are.
///
/// The destination appears whole or not at all, also where the process is killed. True: this call
/// has made it. False: it has not, and nothing is left behind. So it is where
/// - anything stands at the destination already, a link that leads nowhere included: it stays;
/// - the source is missing, may not be read, or is a directory, FIFO, socket or device; this is
///   answered at once, nothing is waited for;
/// - the destination's directory is missing or may not be written, the disk is full, or the copy
///   passes the process's size limit while SIGXFSZ is ignored;
/// - either path is empty or holds a zero character.
///
/// Where the file system knows no unnamed files, the copy is written under a name `.copy-XXXXXX`
/// beside the destination; a process killed meanwhile leaves that name behind. If the file system
/// has neither hard links nor a renaming that replaces nothing, a destination that another process
/// creates at the very end is replaced.
BASEKIT2_API bool copy_file(const path_t& from, const path_t& to);

/// Reads the whole of a regular file; a link to one is followed. False, with `bytes` unchanged,
/// where it has more than `at_most` bytes, is missing, may not be read, or is anything but a
/// regular file; this is answered at once, nothing is waited for.
BASEKIT2_API bool read_file(const path_t& path, std::size_t at_most, std::string& bytes);

/// Removes the name of a file, or of anything else that is no directory; a link is removed, not
/// what it leads to. False for a directory, for a name that is not there, that may not be removed,
/// that is empty or holds a zero character: nothing is changed then.
BASEKIT2_API bool remove_file(const path_t& path);

} // namespace basekit2

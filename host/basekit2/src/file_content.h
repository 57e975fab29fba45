#pragma once

#include <cstddef>
#include <string>

namespace basekit2
{

enum class content_t
{
    read,
    missing, ///< there is no file of that name
    failed
};

/// Reads the whole of a regular file that has no more than `at_most` bytes. Leaves `bytes`
/// unchanged on failure. Does not wait for the writer of a FIFO.
content_t read_content(const std::wstring& name, std::size_t at_most, std::string& bytes);

} // namespace basekit2

#pragma once

#include <cstddef>
#include <string>

namespace basekit2
{

enum class content_t
{
    read,
    missing, ///< no file of that name is there
    failed
};

/// Reads the whole of a regular file that has no more than `at_most` bytes. Otherwise `bytes` is
/// unchanged. Nothing is waited for.
content_t read_content(const std::wstring& name, std::size_t at_most, std::string& bytes);

} // namespace basekit2

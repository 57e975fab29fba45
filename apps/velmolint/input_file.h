#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace velmolint
{

/// Reads a regular file of up to 16 MiB, the library's own limit for configuration files and
/// catalogs. On failure, returns none and sets the reason.
std::optional<std::string> read_input(const std::filesystem::path& file, std::string& reason);

} // namespace velmolint

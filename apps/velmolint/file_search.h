#pragma once

#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmolint
{

/// Thrown if the program cannot run; what() is the reason.
class usage_error_t : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Returns the names of the `.xml` files in the directory, without extension. Throws usage_error_t
/// if it cannot be read.
std::set<std::string> find_config_sources(const std::filesystem::path& directory);

/// Returns the catalogs among the arguments and in the directories among them, sorted, each once.
/// Throws usage_error_t if an argument is neither a directory nor a `.po` or `.mo` file, or if
/// there are too many catalogs.
std::vector<std::filesystem::path> find_catalogs(const std::vector<std::string>& arguments);

} // namespace velmolint

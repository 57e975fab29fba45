#include "file_search.h"

#include "output_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <system_error>

namespace velmolint
{
namespace
{

namespace fs = std::filesystem;

// DIRECTORY/LOCALE/LC_MESSAGES/FILE, and one more folder above.
constexpr int max_depth = 3;
constexpr std::size_t max_files = 10000;
constexpr std::uintmax_t max_total_bytes = std::uintmax_t{256} << 20U;

bool is_catalog_name(const fs::path& file)
{
    return file.extension() == ".po" || file.extension() == ".mo";
}

bool is_regular(const fs::path& file)
{
    std::error_code error;
    return fs::is_regular_file(file, error);
}

void require_success(const std::error_code& error, const std::string& directory)
{
    if (error)
        throw usage_error_t("cannot read the directory " + in_quotes(directory) + ": " +
                            error.message());
}

void add_file(std::vector<fs::path>& files, const fs::path& file)
{
    if (files.size() == max_files)
        throw usage_error_t("there are more than 10,000 catalogs; name fewer directories");
    files.push_back(file.lexically_normal());
}

void add_directory(std::vector<fs::path>& files, const std::string& directory)
{
    std::error_code error;
    fs::recursive_directory_iterator entry(directory, error);
    require_success(error, directory);
    while (entry != fs::recursive_directory_iterator()) {
        if (entry.depth() == max_depth)
            entry.disable_recursion_pending();
        if (is_catalog_name(entry->path()) && is_regular(entry->path()))
            add_file(files, entry->path());
        entry.increment(error);
        require_success(error, directory);
    }
}

void add_argument(std::vector<fs::path>& files, const std::string& argument)
{
    std::error_code error;
    const fs::file_status status = fs::status(argument, error);
    if (!fs::exists(status))
        throw usage_error_t(in_quotes(argument) + " does not exist");
    if (fs::is_directory(status))
        add_directory(files, argument);
    else if (is_catalog_name(argument))
        add_file(files, argument);
    else
        throw usage_error_t(in_quotes(argument) + " is neither a directory nor a .po or .mo file");
}

/// All catalogs are in memory at once.
void check_total_size(const std::vector<fs::path>& files)
{
    std::uintmax_t total = 0;
    for (const fs::path& file : files) {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(file, error);
        total += error ? 0 : std::min(size, max_total_bytes + 1);
        if (total > max_total_bytes)
            throw usage_error_t("the catalogs have more than 256 MiB; name fewer directories");
    }
}

} // namespace

std::set<std::string> find_config_sources(const fs::path& directory)
{
    std::error_code error;
    std::set<std::string> sources;
    fs::directory_iterator entry(directory, error);
    require_success(error, directory.string());
    while (entry != fs::directory_iterator()) {
        if (entry->path().extension() == ".xml")
            sources.insert(entry->path().stem().string());
        entry.increment(error);
        require_success(error, directory.string());
    }
    return sources;
}

std::vector<fs::path> find_catalogs(const std::vector<std::string>& arguments)
{
    std::vector<fs::path> files;
    for (const std::string& argument : arguments)
        add_argument(files, argument);
    std::sort(files.begin(), files.end());
    files.erase(std::unique(files.begin(), files.end()), files.end());
    check_total_size(files);
    return files;
}

} // namespace velmolint

#include "catalog_languages.h"

#include <locale_folders.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace velmolog
{
namespace
{

using std::filesystem::path;

std::vector<path> entries_of(const path& directory)
{
    std::vector<path> entries;
    std::error_code error;
    for (std::filesystem::directory_iterator next(directory, error), end; !error && next != end;
         next.increment(error))
        entries.push_back(next->path());
    return entries;
}

bool is_catalog(const path& file)
{
    std::error_code error;
    return file.extension() == ".mo" && std::filesystem::is_regular_file(file, error);
}

bool has_catalogs(const path& folder)
{
    const std::vector<path> files = entries_of(folder / "LC_MESSAGES");
    return std::any_of(files.begin(), files.end(), is_catalog);
}

/// Returns whether setbook2 looks into the folder for a locale of the same name.
bool is_locale(const std::string& folder)
{
    const std::vector<std::string> folders = setbook2::locale_folders(folder);
    return std::find(folders.begin(), folders.end(), folder) != folders.end();
}

} // namespace

std::vector<std::string> catalog_languages(const std::string& locale_directory)
{
    std::vector<std::string> languages;
    for (const path& folder : entries_of(locale_directory)) {
        const std::string name = folder.filename().string();
        if (is_locale(name) && has_catalogs(folder))
            languages.push_back(name);
    }
    std::sort(languages.begin(), languages.end());
    return languages;
}

std::size_t index_of_language(const std::vector<std::string>& languages, const std::string& locale)
{
    for (const std::string& folder : setbook2::locale_folders(locale)) {
        const auto found = std::find(languages.begin(), languages.end(), folder);
        if (found != languages.end())
            return static_cast<std::size_t>(found - languages.begin());
    }
    return 0;
}

} // namespace velmolog

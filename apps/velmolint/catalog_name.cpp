#include "catalog_name.h"

#include <unicode/locid.h>

#include <algorithm>
#include <cstddef>

namespace velmolint
{
namespace
{

const char locale_folder[] = "LC_MESSAGES";

bool is_lower(char letter)
{
    return letter >= 'a' && letter <= 'z';
}

bool ends_with(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), std::string::npos, end) == 0;
}

/// Splits "PREFIX.SOURCE". Returns whether the source is a known one. Prefers the longest source.
bool split_known(const std::string& stem, const std::set<std::string>& sources,
                 catalog_name_t& name)
{
    bool is_found = false;
    for (const std::string& source : sources) {
        const bool is_whole = stem == source;
        if (!is_whole && !ends_with(stem, "." + source))
            continue;
        if (is_found && source.size() < name.source.size())
            continue;
        is_found = true;
        name.source = source;
        name.prefix.reset();
        if (!is_whole)
            name.prefix = stem.substr(0, stem.size() - source.size() - 1);
    }
    return is_found;
}

void split_unknown(const std::string& stem, catalog_name_t& name)
{
    const std::size_t dot = stem.rfind('.');
    if (dot == std::string::npos) {
        name.source = stem;
        return;
    }
    name.source = stem.substr(dot + 1);
    name.prefix = stem.substr(0, dot);
}

/// Splits a language from the end, as in "audit-de" or "audit.pt_BR". Returns whether the rest
/// names a known source, or any source after a hyphen.
bool split_language(const std::string& stem, const std::set<std::string>& sources,
                    catalog_name_t& name)
{
    for (std::size_t i = stem.find_first_of("-._"); i != std::string::npos;
         i = stem.find_first_of("-._", i + 1)) {
        const std::string rest = stem.substr(0, i);
        const std::string language = stem.substr(i + 1);
        if (rest.empty() || !is_locale(language))
            continue;
        const bool is_known = split_known(rest, sources, name);
        if (!is_known && stem[i] != '-')
            continue;
        if (!is_known)
            split_unknown(rest, name);
        name.language = normalized_locale(language);
        return true;
    }
    return false;
}

/// Finds the source of a file such as `audit/de.po` or `de.po`.
std::string source_of_folder(const std::string& folder, const std::set<std::string>& sources)
{
    if (sources.count(folder) != 0)
        return folder;
    return sources.size() == 1 ? *sources.begin() : std::string();
}

} // namespace

bool is_locale(const std::string& name)
{
    const std::string language = base_language(name);
    if (language.size() < 2 || language.size() > 3 ||
        !std::all_of(language.begin(), language.end(), is_lower))
        return false;
    return *icu::Locale(language.c_str()).getISO3Language() != '\0';
}

std::string base_language(const std::string& locale)
{
    return locale.substr(0, locale.find_first_of("_-.@"));
}

std::string normalized_locale(const std::string& locale)
{
    std::string result = locale;
    const std::size_t encoding = result.find('.');
    if (encoding != std::string::npos)
        result.erase(encoding, result.find('@', encoding) - encoding);
    std::replace(result.begin(), result.end(), '-', '_');
    return result;
}

catalog_name_t parse_catalog_name(const std::filesystem::path& file,
                                  const std::set<std::string>& known_sources)
{
    catalog_name_t name;
    const std::string stem = file.stem().string();
    const std::filesystem::path folder = file.parent_path();
    if (folder.filename() == locale_folder) {
        name.is_locale_folder = true;
        name.language = folder.parent_path().filename().string();
    } else if (is_locale(folder.filename().string())) {
        name.language = normalized_locale(folder.filename().string());
    }
    if (split_known(stem, known_sources, name))
        return name;
    if (!name.is_locale_folder && name.language.empty() && is_locale(stem)) {
        name.language = normalized_locale(stem);
        name.source = source_of_folder(folder.filename().string(), known_sources);
    } else if (name.is_locale_folder || !split_language(stem, known_sources, name)) {
        split_unknown(stem, name);
    }
    return name;
}

} // namespace velmolint

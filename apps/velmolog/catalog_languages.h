#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace velmolog
{

/// Returns the languages that have message catalogs in a directory, sorted: each folder LOCALE with
/// a file LOCALE/LC_MESSAGES/NAME.mo. Passes over folders that setbook2 does not look into.
std::vector<std::string> catalog_languages(const std::string& locale_directory);

/// Returns the index of the language that a user of this locale reads: of "de" for "de_AT", if
/// there is no "de_AT". Returns 0 if there is none.
std::size_t index_of_language(const std::vector<std::string>& languages, const std::string& locale);

} // namespace velmolog

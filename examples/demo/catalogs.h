/// @file
/// The program's own texts in the languages that it comes with.
#pragma once

#include <string>

namespace audit
{

/// The language that the user's environment asks for, as a locale's name; empty where it asks for
/// none.
std::string environment_language();

/// Takes the texts in that language from now on. False where there are none; those that were taken
/// before may be there still.
bool bind_catalogs(const std::wstring& directory, const std::string& language);

/// As bind_catalogs(), with English in place of a language that has no texts.
void bind_catalogs_or_english(const std::wstring& directory, const std::string& language);

/// The text of that id, empty where there is none.
std::wstring catalog_text(const std::wstring& id);

} // namespace audit

/// @file
/// The program's texts, in all its languages.
#pragma once

#include <string>

namespace audit
{

/// Returns the language that the user's environment asks for, as a locale's name. Returns an empty
/// string if it asks for none.
std::string environment_language();

/// Uses the texts in that language from now on. Returns false if there are none; the texts that
/// were bound before can still be in use then.
bool bind_catalogs(const std::wstring& directory, const std::string& language);

/// Like bind_catalogs(), with English if the language has no texts.
void bind_catalogs_or_english(const std::wstring& directory, const std::string& language);

/// Returns the text of that id. Returns an empty string if there is none.
std::wstring catalog_text(const std::wstring& id);

} // namespace audit

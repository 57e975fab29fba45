#pragma once

#include <string>
#include <vector>

namespace setbook2
{

/// Returns the folders that can have the catalogs of a locale, the most specific one first: each
/// step of ICU's fall-back, with a script also as gettext spells it. For "sr_Latn_RS" these are
/// "sr_Latn_RS", "sr_RS@latin", "sr_Latn", "sr@latin" and "sr".
///
/// The locale is `language[_Script][_COUNTRY][.encoding][@modifier]`, with '-' instead of '_' too.
/// Returns no folder if it has no language, or characters other than ASCII letters, digits, '_',
/// '-', '.' and '@': a folder becomes part of a path.
std::vector<std::string> locale_folders(const std::string& locale);

} // namespace setbook2

#pragma once

#include "catalog.h"

#include <filesystem>
#include <set>
#include <string>

namespace velmolint
{

/// Returns whether the name is a language of ISO 639, with a country or a variant or without.
bool is_locale(const std::string& name);

/// Returns the language without its country, of a name such as "de_AT".
std::string base_language(const std::string& locale);

/// Returns the name in the form of the folder of a locale: "pt-BR.UTF-8" is "pt_BR".
std::string normalized_locale(const std::string& locale);

/// Reads source, prefix and language from the path of a catalog, such as `de/audit.po`,
/// `audit-de.po`, `de.po` or `de/LC_MESSAGES/console.audit.mo`. A source may contain dots if it is
/// one of the known sources.
catalog_name_t parse_catalog_name(const std::filesystem::path& file,
                                  const std::set<std::string>& known_sources);

} // namespace velmolint

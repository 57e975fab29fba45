#pragma once

#include "finding.h"

#include <optional>
#include <string>
#include <vector>

namespace velmolint
{

/// One entry of a catalog. All texts are in UTF-8.
struct text_t
{
    std::string id;
    std::string text; ///< form 0 if the entry has plural forms; empty if it is not translated
    bool has_context = false;
    bool is_plural = false;
    bool is_fuzzy = false;
    position_t id_position;
    position_t text_position;
};

/// The content of a `.po` or `.mo` file.
struct catalog_content_t
{
    std::vector<text_t> texts;   ///< without the header
    std::string header_language; ///< empty if the header has none
    position_t header_position;
};

/// Source, prefix and language of a catalog.
struct catalog_name_t
{
    std::string source; ///< empty if it is unknown
    std::optional<std::string> prefix;
    std::string language;          ///< empty if it is unknown
    bool is_locale_folder = false; ///< the language is that of DIRECTORY/LANGUAGE/LC_MESSAGES

    /// Returns the name under which the library looks the catalog up.
    std::string catalog() const { return prefix ? *prefix + "." + source : source; }
};

struct catalog_t
{
    std::string file;
    catalog_name_t name;
    catalog_content_t content;
    bool is_readable = false;
};

} // namespace velmolint

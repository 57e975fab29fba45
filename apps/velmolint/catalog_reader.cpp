#include "catalog_reader.h"

#include "catalog_name.h"
#include "input_file.h"
#include "mo_catalog.h"
#include "output_text.h"
#include "po_file.h"

#include <optional>
#include <string>
#include <utility>

namespace velmolint
{
namespace
{

/// Language of a catalog that names none, as in ISO 639.
const char unknown_language[] = "und";

std::optional<catalog_content_t> read_content(const std::filesystem::path& file,
                                              findings_t& findings)
{
    std::string reason;
    const std::optional<std::string> bytes = read_input(file, reason);
    if (!bytes) {
        findings.error({file.string(), {}}, "catalog-unreadable",
                       "The file cannot be read: " + reason + ".");
        return std::nullopt;
    }
    if (file.extension() == ".mo")
        return read_mo(file.string(), *bytes, findings);
    return read_po(file.string(), *bytes, findings);
}

/// Returns whether it is the folder of the locales "C" and "POSIX".
bool is_without_language(const std::string& folder)
{
    return folder == "c" || folder == "posix";
}

/// Sets the language: that of the folder of a locale, that of the header, or that of the name.
void set_language(catalog_t& catalog, findings_t& findings)
{
    const location_t header = {catalog.file, catalog.content.header_position};
    const std::string in_header = normalized_locale(catalog.content.header_language);
    std::string& language = catalog.name.language;
    if (!in_header.empty() && !language.empty() &&
        base_language(in_header) != base_language(language))
        findings.warning(header, "language-mismatch",
                         "The header has the language " + in_quotes(in_header) +
                             ", but the name of the file has " + in_quotes(language) +
                             ". Correct one of them.");
    if (!in_header.empty() && !catalog.name.is_locale_folder)
        language = in_header;
    if (is_locale(language) || is_without_language(language))
        return;
    const std::string reason = language.empty()
                                   ? "Neither the header nor the name of the file has a language."
                                   : "The language " + in_quotes(language) + " is unknown.";
    findings.warning(header, "language-unknown",
                     reason + " Add a line such as Language: de to the header.");
    if (language.empty())
        language = unknown_language;
}

} // namespace

catalog_t read_catalog(const std::filesystem::path& file, const catalog_name_t& name,
                       findings_t& findings)
{
    catalog_t catalog;
    catalog.file = file.string();
    catalog.name = name;
    std::optional<catalog_content_t> content = read_content(file, findings);
    if (!content)
        return catalog;
    catalog.content = std::move(*content);
    catalog.is_readable = true;
    set_language(catalog, findings);
    return catalog;
}

} // namespace velmolint

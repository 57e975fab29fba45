#include "mo_catalog.h"

#include "catalog_header.h"
#include "charset.h"

#include <mo_file.h>

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace velmolint
{
namespace
{

typedef std::vector<setbook2::mo_file_t::entry_t> entries_t;

constexpr char context_end = '\x04';

std::string find_header(const entries_t& entries)
{
    for (const auto& entry : entries)
        if (entry.id.empty())
            return std::string(entry.text);
    return std::string();
}

/// Joins the ids and the first form of each text with a zero after each, so that they are converted
/// at once.
std::string joined(const entries_t& entries)
{
    std::string result;
    for (const auto& entry : entries)
        result.append(entry.id)
            .append(1, '\0')
            .append(entry.text.substr(0, entry.text.find('\0')))
            .append(1, '\0');
    return result;
}

/// Takes the next string off the joined ones.
std::string next_string(std::string_view& strings)
{
    const std::size_t end = strings.find('\0');
    std::string result(strings.substr(0, end));
    strings.remove_prefix(end + 1);
    return result;
}

text_t make_text(std::string id, std::string text, bool is_plural)
{
    text_t result;
    const std::size_t context = id.find(context_end);
    result.has_context = context != std::string::npos;
    result.id = result.has_context ? id.substr(context + 1) : std::move(id);
    result.text = std::move(text);
    result.is_plural = is_plural;
    return result;
}

} // namespace

std::optional<catalog_content_t> read_mo(const std::string& file, const std::string& bytes,
                                         findings_t& findings)
{
    const auto parsed = setbook2::mo_file_t::parse({bytes.begin(), bytes.end()});
    if (!parsed) {
        findings.error({file, {}}, "mo-invalid",
                       "The file is damaged, or is no .mo file. Create it again with msgfmt.");
        return std::nullopt;
    }
    const std::string header = find_header(parsed->entries());
    const auto strings =
        to_utf8(joined(parsed->entries()), find_charset(header), {file, {}}, findings);
    if (!strings)
        return std::nullopt;
    catalog_content_t content;
    content.header_language = find_language(header);
    std::string_view rest = *strings;
    for (const auto& entry : parsed->entries()) {
        std::string id = next_string(rest);
        std::string text = next_string(rest);
        if (!id.empty())
            content.texts.push_back(make_text(std::move(id), std::move(text), entry.has_plural));
    }
    return content;
}

} // namespace velmolint

#include "config_check.h"

#include "output_text.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace velmolint
{
namespace
{

const char id_name[] = "id";
const char prefix_name[] = "prefix";
const char title_name[] = "title_msgid";
const char text_id_suffix[] = "msgid";

std::string in_line(const position_t& position)
{
    return "in line " + std::to_string(position.line);
}

bool is_key(const property_t& property)
{
    return property.name == id_name || property.name == prefix_name;
}

/// Finds properties that the library never returns, since an earlier one precedes them.
class shadow_check_t
{
public:
    shadow_check_t(const config_file_t& config, findings_t& findings)
        : m_config(config), m_findings(findings)
    {}

    void check();

private:
    /// The first entries with a property, of one id.
    struct seen_t
    {
        position_t first;
        std::string first_prefix;
        std::map<std::string, position_t> by_prefix;
    };

    void check(const std::string& id, const std::string& prefix, const property_t& property);
    void report(const property_t& property, const std::string& id, const std::string& reason);

    const config_file_t& m_config;
    findings_t& m_findings;
    std::map<std::pair<std::string, std::string>, seen_t> m_seen; ///< by id and property
};

void shadow_check_t::check()
{
    for (const entry_t& entry : m_config.entries) {
        const std::string id = entry.value(id_name);
        if (id.empty())
            continue;
        const std::string prefix = entry.value(prefix_name);
        for (const property_t& property : entry.properties)
            if (!is_key(property) && !property.value.empty())
                check(id, prefix, property);
    }
}

// For a receiver with a prefix, the library searches the entries with that prefix first, then all
// entries.
void shadow_check_t::check(const std::string& id, const std::string& prefix,
                           const property_t& property)
{
    seen_t& seen = m_seen[{id, property.name}];
    const auto same = seen.by_prefix.find(prefix);
    if (same != seen.by_prefix.end())
        report(property, id,
               "the entry " + in_line(same->second) +
                   " sets it for the same id and prefix. Remove one of them.");
    else if (prefix.empty() && !seen.by_prefix.empty())
        report(property, id,
               "the entry with the prefix " + in_quotes(seen.first_prefix) + " " +
                   in_line(seen.first) + " precedes it. Put the entry without a prefix first.");
    if (seen.by_prefix.empty()) {
        seen.first = property.position;
        seen.first_prefix = prefix;
    }
    seen.by_prefix.emplace(prefix, property.position);
}

void shadow_check_t::report(const property_t& property, const std::string& id,
                            const std::string& reason)
{
    m_findings.warning({m_config.file, property.position}, "property-shadowed",
                       "The property " + in_quotes(property.name) + " of " + in_quotes(id) +
                           " is never used, because " + reason);
}

void check_id(const std::string& file, const entry_t& entry, findings_t& findings)
{
    const std::string id = entry.value(id_name);
    if (id.empty())
        findings.error({file, entry.position}, "entry-without-id",
                       "The entry has no id, so it never matches. Set its id to the type of the "
                       "message.");
    else if (id != trimmed(id))
        findings.error({file, entry.position}, "id-white-space",
                       "The id " + in_quotes(id) +
                           " has white space or a line break at an end, so it never matches. "
                           "Remove it.");
}

/// Returns the part before the first dot of an identifier with dots, empty for any other text.
std::string first_segment(const std::string& text)
{
    const std::size_t dot = text.find('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == text.size())
        return std::string();
    const bool is_identifier = std::all_of(text.begin(), text.end(), [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= '0' && letter <= '9') || letter == '_' || letter == '-' || letter == '.';
    });
    return is_identifier ? text.substr(0, dot) : std::string();
}

/// Checks the ids of one configuration file.
class id_check_t
{
public:
    id_check_t(const config_file_t& config, const text_index_t& texts, findings_t& findings);

    void check();

private:
    void check_type(const entry_t& entry);
    void check_property(const property_t& property, const std::string& prefix);
    bool looks_like_text_id(const property_t& property) const;

    const config_file_t& m_config;
    const text_index_t& m_texts;
    findings_t& m_findings;
    std::set<std::string> m_title_segments; ///< first segments of the titles' ids
    std::set<std::string> m_checked_types;
};

id_check_t::id_check_t(const config_file_t& config, const text_index_t& texts, findings_t& findings)
    : m_config(config), m_texts(texts), m_findings(findings)
{
    for (const entry_t& entry : config.entries)
        m_title_segments.insert(first_segment(entry.value(title_name)));
    m_title_segments.erase(std::string());
}

void id_check_t::check()
{
    for (const entry_t& entry : m_config.entries) {
        check_type(entry);
        const std::string prefix = entry.value(prefix_name);
        for (const property_t& property : entry.properties)
            if (!is_key(property) && !property.value.empty() &&
                !m_texts.has(property.value, prefix))
                check_property(property, prefix);
    }
}

void id_check_t::check_type(const entry_t& entry)
{
    const std::string id = entry.value(id_name);
    const bool is_usable = !id.empty() && id == trimmed(id);
    if (!is_usable || m_texts.has(id, std::string()) || !m_checked_types.insert(id).second)
        return;
    m_findings.error({m_config.file, entry.position}, "text-undefined",
                     "No catalog of " + in_quotes(m_texts.source()) +
                         " has a text for the message type " + in_quotes(id) + ". Add it.");
}

void id_check_t::check_property(const property_t& property, const std::string& prefix)
{
    const std::string where =
        prefix.empty() ? std::string() : " for the prefix " + in_quotes(prefix);
    const std::string reason = property.value == trimmed(property.value)
                                   ? ". Add it, or correct the id."
                                   : ". Remove the white space and line breaks at its ends.";
    if (property.name == title_name)
        m_findings.error({m_config.file, property.position}, "title-undefined",
                         "No catalog of " + in_quotes(m_texts.source()) + " has the title " +
                             in_quotes(property.value) + where + reason);
    else if (looks_like_text_id(property))
        m_findings.warning({m_config.file, property.position}, "property-undefined",
                           "The property " + in_quotes(property.name) +
                               " looks like the id of a text, but no catalog of " +
                               in_quotes(m_texts.source()) + " has " + in_quotes(property.value) +
                               where + reason);
}

bool id_check_t::looks_like_text_id(const property_t& property) const
{
    const std::string suffix = text_id_suffix;
    const std::string& name = property.name;
    const bool has_suffix =
        name.size() >= suffix.size() &&
        name.compare(name.size() - suffix.size(), std::string::npos, suffix) == 0;
    return has_suffix || m_title_segments.count(first_segment(trimmed(property.value))) != 0;
}

} // namespace

text_index_t::text_index_t(const std::string& source, const std::vector<const catalog_t*>& catalogs)
    : m_source(source)
{
    for (const catalog_t* catalog : catalogs) {
        const auto& prefix = catalog->name.prefix;
        std::set<std::string>& ids = prefix ? m_by_prefix[*prefix] : m_without_prefix;
        for (const text_t& text : catalog->content.texts) {
            if (text.has_context)
                continue;
            ids.insert(text.id);
            m_all.insert(text.id);
        }
    }
}

bool text_index_t::has(const std::string& id, const std::string& prefix) const
{
    if (prefix.empty())
        return m_all.count(id) != 0;
    const auto own = m_by_prefix.find(prefix);
    return m_without_prefix.count(id) != 0 ||
           (own != m_by_prefix.end() && own->second.count(id) != 0);
}

void check_entries(const config_file_t& config, findings_t& findings)
{
    for (const entry_t& entry : config.entries)
        check_id(config.file, entry, findings);
    shadow_check_t(config, findings).check();
}

void check_texts(const config_file_t& config, const text_index_t& texts, findings_t& findings)
{
    id_check_t(config, texts, findings).check();
}

} // namespace velmolint

#include "text_check.h"

#include "catalog_name.h"
#include "output_text.h"

#include <algorithm>
#include <cstddef>

namespace velmolint
{
namespace
{

const char preferred_language[] = "en";

/// Returns whether msgfmt compiles the text and the library finds it.
bool is_used(const text_t& text)
{
    return !text.has_context && !text.is_fuzzy && !text.text.empty();
}

std::size_t count_used(const catalog_t& catalog)
{
    const auto& texts = catalog.content.texts;
    return static_cast<std::size_t>(std::count_if(texts.begin(), texts.end(), is_used));
}

/// Returns the index of the catalog in English or, without one, of the first with most texts.
std::size_t find_reference(const std::vector<const catalog_t*>& catalogs)
{
    std::size_t best = 0;
    for (std::size_t i = 0; i != catalogs.size(); ++i) {
        if (base_language(catalogs[i]->name.language) == preferred_language)
            return i;
        if (count_used(*catalogs[i]) > count_used(*catalogs[best]))
            best = i;
    }
    return best;
}

} // namespace

void text_check_t::check(const std::vector<const catalog_t*>& catalogs)
{
    std::vector<patterns_t> patterns;
    patterns.reserve(catalogs.size());
    for (const catalog_t* catalog : catalogs) {
        check_support(*catalog);
        patterns.push_back(check_patterns(*catalog));
    }
    const std::size_t reference = find_reference(catalogs);
    for (std::size_t i = 0; i != catalogs.size(); ++i)
        if (i != reference)
            compare(*catalogs[reference], patterns[reference], *catalogs[i], patterns[i]);
}

void text_check_t::check_support(const catalog_t& catalog)
{
    for (const text_t& text : catalog.content.texts) {
        const location_t location = {catalog.file, text.id_position};
        if (text.has_context)
            m_findings.error(location, "context",
                             "The text " + in_quotes(text.id) +
                                 " has a context (msgctxt), so the library does not find it. "
                                 "Remove the context.");
        if (text.is_plural)
            m_findings.error(location, "native-plural",
                             "The text " + in_quotes(text.id) +
                                 " has gettext's plural forms, of which the library uses the "
                                 "first only. Write {n, plural, ...} in one msgstr.");
    }
}

text_check_t::patterns_t text_check_t::check_patterns(const catalog_t& catalog)
{
    patterns_t patterns;
    for (const text_t& text : catalog.content.texts) {
        if (!is_used(text))
            continue;
        const pattern_t& pattern =
            patterns.emplace(text.id, parse_pattern(text.text)).first->second;
        m_pattern_check.check(
            pattern, catalog.name.language,
            text_report_t(m_findings, {catalog.file, text.text_position}, text.id));
    }
    return patterns;
}

void text_check_t::compare(const catalog_t& reference, const patterns_t& reference_patterns,
                           const catalog_t& catalog, const patterns_t& patterns)
{
    for (const text_t& text : catalog.content.texts) {
        const auto expected = reference_patterns.find(text.id);
        const auto found = patterns.find(text.id);
        if (is_used(text) && expected != reference_patterns.end())
            compare_placeholders(
                expected->second, reference.name.language, found->second,
                text_report_t(m_findings, {catalog.file, text.text_position}, text.id));
    }
}

} // namespace velmolint

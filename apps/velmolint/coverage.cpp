#include "coverage.h"

#include "output_text.h"

#include <locale_folders.h>

#include <algorithm>

namespace velmolint
{

coverage_count_t::coverage_count_t(const std::vector<const catalog_t*>& catalogs,
                                   const std::set<std::string>& languages)
    : m_catalogs(catalogs)
{
    for (const std::string& language : languages)
        m_languages[language];
    for (const catalog_t* catalog : catalogs)
        add_texts(*catalog);
    for (auto& [name, language] : m_languages)
        add_fallbacks(name, language);
}

void coverage_count_t::add_texts(const catalog_t& catalog)
{
    language_t& language = m_languages[catalog.name.language];
    if (language.file.empty())
        language.file = catalog.file;
    for (const text_t& text : catalog.content.texts) {
        if (text.has_context)
            continue;
        m_ids.emplace(text.id, catalog.name.language);
        const state_t state = state_of(text);
        const auto known = language.own.emplace(text.id, state).first;
        known->second = std::max(known->second, state);
    }
}

void coverage_count_t::add_fallbacks(const std::string& name, language_t& language) const
{
    language.all = language.own;
    for (const std::string& folder : setbook2::locale_folders(name)) {
        const auto fallback = m_languages.find(folder);
        if (folder == name || fallback == m_languages.end())
            continue;
        for (const auto& [id, state] : fallback->second.own) {
            if (state != state_t::translated)
                continue;
            const auto known = language.all.emplace(id, state).first;
            if (known->second == state_t::untranslated)
                known->second = state;
        }
    }
}

coverage_count_t::state_t coverage_count_t::state_of(const text_t& text)
{
    if (text.text.empty())
        return state_t::untranslated;
    return text.is_fuzzy ? state_t::fuzzy : state_t::translated;
}

void coverage_count_t::report(findings_t& findings) const
{
    for (const catalog_t* catalog : m_catalogs)
        for (const text_t& text : catalog->content.texts)
            if (!text.has_context)
                report_text(text, *catalog, findings);
    for (const auto& [name, language] : m_languages)
        report_absent(name, language, findings);
}

void coverage_count_t::report_text(const text_t& text, const catalog_t& catalog,
                                   findings_t& findings) const
{
    const location_t location = {catalog.file, text.id_position};
    const state_t state = m_languages.at(catalog.name.language).all.at(text.id);
    if (state == state_t::fuzzy)
        findings.warning(location, "text-fuzzy",
                         "The text " + in_quotes(text.id) +
                             " is fuzzy, so msgfmt leaves it out. Check it and remove the mark.");
    else if (state == state_t::untranslated)
        findings.warning(location, "text-untranslated",
                         "The text " + in_quotes(text.id) + " is not translated. Translate it.");
}

void coverage_count_t::report_absent(const std::string& name, const language_t& language,
                                     findings_t& findings) const
{
    if (language.file.empty() && language.all.empty()) {
        findings.warning({m_catalogs.front()->file, {}}, "catalog-missing",
                         "There is no catalog " + in_quotes(m_catalogs.front()->name.catalog()) +
                             " for the language " + in_quotes(name) +
                             ", which other catalogs have. Add it.");
        return;
    }
    const std::string file = language.file.empty() ? m_catalogs.front()->file : language.file;
    for (const auto& [id, other_language] : m_ids)
        if (language.all.count(id) == 0)
            findings.warning({file, {}}, "text-missing",
                             "The language " + in_quotes(name) + " has no text " + in_quotes(id) +
                                 ", which the language " + in_quotes(other_language) +
                                 " has. Add it.");
}

void coverage_count_t::add_to(coverage_t& coverage) const
{
    for (const auto& [name, language] : m_languages) {
        coverage_row_t& row = coverage[name];
        row.total += m_ids.size();
        row.missing += m_ids.size();
        for (const auto& [id, state] : language.all) {
            row.translated += state == state_t::translated ? 1 : 0;
            row.fuzzy += state == state_t::fuzzy ? 1 : 0;
            row.missing -= state == state_t::untranslated ? 0 : 1;
        }
    }
}

} // namespace velmolint

#include "coverage.h"

#include "output_text.h"

#include <algorithm>

namespace velmolint
{

coverage_count_t::coverage_count_t(const std::vector<const catalog_t*>& catalogs,
                                   const std::set<std::string>& languages)
    : m_catalogs(catalogs), m_all_languages(languages)
{
    for (const catalog_t* catalog : catalogs) {
        language_t& language = m_languages[catalog->name.language];
        if (language.file.empty())
            language.file = catalog->file;
        for (const text_t& text : catalog->content.texts) {
            if (text.has_context)
                continue;
            m_ids.emplace(text.id, catalog->name.language);
            const state_t state = state_of(text);
            const auto known = language.states.emplace(text.id, state).first;
            known->second = std::max(known->second, state);
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
            report_text(text, catalog->file, findings);
    for (const std::string& language : m_all_languages) {
        const auto known = m_languages.find(language);
        if (known != m_languages.end())
            report_absent(known->second, findings);
        else
            findings.warning({m_catalogs.front()->file, {}}, "catalog-missing",
                             "There is no catalog " +
                                 in_quotes(m_catalogs.front()->name.catalog()) +
                                 " for the language " + in_quotes(language) +
                                 ", which other catalogs have. Add it.");
    }
}

void coverage_count_t::report_text(const text_t& text, const std::string& file,
                                   findings_t& findings)
{
    const state_t state = state_of(text);
    if (text.has_context || state == state_t::translated)
        return;
    if (state == state_t::fuzzy)
        findings.warning({file, text.id_position}, "text-fuzzy",
                         "The text " + in_quotes(text.id) +
                             " is fuzzy, so msgfmt leaves it out. Check it and remove the mark.");
    else
        findings.warning({file, text.id_position}, "text-untranslated",
                         "The text " + in_quotes(text.id) + " is not translated. Translate it.");
}

void coverage_count_t::report_absent(const language_t& language, findings_t& findings) const
{
    for (const auto& [id, other_language] : m_ids)
        if (language.states.count(id) == 0)
            findings.warning({language.file, {}}, "text-missing",
                             "The catalog has no text " + in_quotes(id) + ", which the language " +
                                 in_quotes(other_language) + " has. Add it.");
}

void coverage_count_t::add_to(coverage_t& coverage) const
{
    for (const std::string& name : m_all_languages) {
        coverage_row_t& row = coverage[name];
        row.total += m_ids.size();
        row.missing += m_ids.size();
        const auto language = m_languages.find(name);
        if (language == m_languages.end())
            continue;
        for (const auto& [id, state] : language->second.states) {
            row.translated += state == state_t::translated ? 1 : 0;
            row.fuzzy += state == state_t::fuzzy ? 1 : 0;
            row.missing -= state == state_t::untranslated ? 0 : 1;
        }
    }
}

} // namespace velmolint

#include "html_report.h"

#include <cstddef>

namespace velmolog
{
namespace
{

// Each language reads its catalogs again for this many messages.
constexpr std::size_t max_collected = 10000;

} // namespace

html_report_t::html_report_t(html_page_t& page, const std::vector<std::string>& languages,
                             const select_language_t& select_language, const present_t& present)
    : m_page(page), m_languages(languages), m_select_language(select_language), m_present(present)
{}

void html_report_t::add(const entry_t& entry)
{
    m_entries.push_back(entry);
    if (m_entries.size() == max_collected)
        add_collected();
}

void html_report_t::finish()
{
    add_collected();
    m_page.finish();
}

void html_report_t::add_texts()
{
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        m_texts[i].push_back(m_present(m_entries[i]));
}

void html_report_t::add_collected()
{
    m_texts.resize(m_entries.size());
    if (m_languages.empty())
        add_texts();
    for (const std::string& language : m_languages) {
        m_select_language(language);
        add_texts();
    }
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        m_page.add(m_entries[i], m_texts[i]);
    m_entries.clear();
    m_texts.clear();
}

} // namespace velmolog

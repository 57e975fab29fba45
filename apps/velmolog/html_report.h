#pragma once

#include "entry.h"
#include "html_page.h"
#include "presenter.h"

#include <functional>
#include <string>
#include <vector>

namespace velmolog
{

/// Adds messages to a page with their texts in every language.
///
/// Catalogs are those of the process, in one language at a time. So this class collects some
/// thousand messages, and then takes their texts from one language after the other.
class html_report_t
{
public:
    typedef std::function<void(const std::string& language)> select_language_t;
    typedef std::function<texts_t(const entry_t& entry)> present_t;

    /// The page must have the same languages, and outlive this object. `present` returns texts in
    /// the language that was selected last. Without languages, none is selected.
    html_report_t(html_page_t& page, const std::vector<std::string>& languages,
                  const select_language_t& select_language, const present_t& present);

    void add(const entry_t& entry);
    /// Adds the messages that were collected, and ends the page.
    void finish();

private:
    void add_texts();
    void add_collected();

    html_page_t& m_page;
    std::vector<std::string> m_languages;
    select_language_t m_select_language;
    present_t m_present;
    std::vector<entry_t> m_entries;
    std::vector<std::vector<texts_t>> m_texts; ///< for each entry, in each language
};

} // namespace velmolog

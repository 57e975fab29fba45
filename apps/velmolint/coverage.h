#pragma once

#include "catalog.h"
#include "finding.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace velmolint
{

/// Numbers of texts of one language.
struct coverage_row_t
{
    std::size_t translated = 0;
    std::size_t fuzzy = 0;
    std::size_t missing = 0; ///< not in the catalog, or not translated
    std::size_t total = 0;   ///< texts that any language has
};

typedef std::map<std::string, coverage_row_t> coverage_t; ///< by language

/// Counts the texts of one catalog in each language, and reports those that are missing or fuzzy. A
/// language such as de_AT takes texts from de, as in the library.
class coverage_count_t
{
public:
    /// Takes the catalogs of one name, and all languages of their source.
    coverage_count_t(const std::vector<const catalog_t*>& catalogs,
                     const std::set<std::string>& languages);

    void report(findings_t& findings) const;
    void add_to(coverage_t& coverage) const;

private:
    enum class state_t
    {
        untranslated,
        fuzzy,
        translated
    };
    typedef std::map<std::string, state_t> states_t; ///< by id
    struct language_t
    {
        std::string file; ///< the first catalog; empty if there is none
        states_t own;
        states_t all; ///< with the texts that the language takes from its fall-backs
    };

    static state_t state_of(const text_t& text);
    void report_text(const text_t& text, const catalog_t& catalog, findings_t& findings) const;
    void add_texts(const catalog_t& catalog);
    void add_fallbacks(const std::string& name, language_t& language) const;
    void report_absent(const std::string& name, const language_t& language,
                       findings_t& findings) const;

    const std::vector<const catalog_t*>& m_catalogs;
    std::map<std::string, language_t> m_languages;
    std::map<std::string, std::string> m_ids; ///< each id with a language that has it
};

} // namespace velmolint

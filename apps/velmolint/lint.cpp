#include "lint.h"

#include "catalog_name.h"
#include "catalog_reader.h"
#include "config_check.h"
#include "config_file.h"
#include "file_search.h"
#include "output_text.h"
#include "text_check.h"

#include <filesystem>
#include <map>
#include <set>
#include <utility>

namespace velmolint
{
namespace
{

typedef std::vector<const catalog_t*> catalogs_t;

class linter_t
{
public:
    explicit linter_t(const selection_t& selection) : m_selection(selection) {}

    result_t run();

private:
    bool is_selected(const catalog_name_t& name) const;
    catalog_name_t name_of(const std::filesystem::path& file) const;
    void read_catalogs(const std::vector<std::filesystem::path>& files);
    void check_source(const std::string& source);
    void check_config(const std::string& source, const catalogs_t& readable, bool is_complete);

    const selection_t& m_selection;
    std::set<std::string> m_config_sources;
    std::set<std::string> m_known_sources; ///< those that a file name can have
    std::set<std::string> m_sources;       ///< those that are checked
    std::vector<catalog_t> m_catalogs;
    result_t m_result;
};

result_t linter_t::run()
{
    m_config_sources = find_config_sources(m_selection.config_directory);
    const std::vector<std::filesystem::path> files = find_catalogs(m_selection.catalogs);
    m_known_sources = m_config_sources;
    if (m_selection.source)
        m_known_sources.insert(*m_selection.source);
    m_sources = m_selection.source ? std::set<std::string>{*m_selection.source} : m_config_sources;
    read_catalogs(files);
    for (const std::string& source : m_sources)
        check_source(source);
    return std::move(m_result);
}

/// Catalogs of other prefixes do not matter to a receiver with the selected one.
bool linter_t::is_selected(const catalog_name_t& name) const
{
    const bool is_source = !m_selection.source || name.source == *m_selection.source;
    const bool is_prefix =
        !m_selection.prefix || !name.prefix || *name.prefix == *m_selection.prefix;
    return is_source && is_prefix;
}

catalog_name_t linter_t::name_of(const std::filesystem::path& file) const
{
    catalog_name_t name = parse_catalog_name(file, m_known_sources);
    if (name.source.empty() && m_selection.source)
        name.source = *m_selection.source;
    return name;
}

void linter_t::read_catalogs(const std::vector<std::filesystem::path>& files)
{
    for (const std::filesystem::path& file : files) {
        const catalog_name_t name = name_of(file);
        if (name.source.empty()) {
            m_result.findings.warning({file.string(), {}}, "source-unknown",
                                      "The name of the file does not contain its source. Name the "
                                      "source with --source, or in the name of the file.");
            continue;
        }
        if (!is_selected(name))
            continue;
        m_sources.insert(name.source);
        m_catalogs.push_back(read_catalog(file, name, m_result.findings));
    }
}

void linter_t::check_source(const std::string& source)
{
    catalogs_t readable;
    bool is_complete = true;
    std::map<std::string, catalogs_t> by_name;
    for (const catalog_t& catalog : m_catalogs) {
        if (catalog.name.source != source)
            continue;
        is_complete = is_complete && catalog.is_readable;
        if (!catalog.is_readable)
            continue;
        readable.push_back(&catalog);
        by_name[catalog.name.catalog()].push_back(&catalog);
    }
    check_config(source, readable, is_complete);
    std::set<std::string> languages;
    for (const catalog_t* catalog : readable)
        languages.insert(catalog->name.language);
    for (const auto& [name, catalogs] : by_name) {
        text_check_t(m_result.findings).check(catalogs);
        const coverage_count_t count(catalogs, languages);
        count.report(m_result.findings);
        count.add_to(m_result.coverage);
    }
}

void linter_t::check_config(const std::string& source, const catalogs_t& readable, bool is_complete)
{
    const auto file = std::filesystem::path(m_selection.config_directory) / (source + ".xml");
    const std::string name = file.lexically_normal().string();
    if (readable.empty() && is_complete)
        m_result.findings.error({name, {}}, "no-catalog",
                                "There is no catalog of the source " + in_quotes(source) +
                                    ". Add one, or name its directory.");
    if (m_config_sources.count(source) == 0) {
        m_result.findings.warning({name, {}}, "config-missing",
                                  "The source " + in_quotes(source) +
                                      " has no configuration file, so its messages have no "
                                      "titles. Add the file.");
        return;
    }
    const std::optional<config_file_t> config = read_config(name, m_result.findings);
    if (!config)
        return;
    check_entries(*config, m_result.findings);
    // A catalog that cannot be read may have the texts.
    if (!readable.empty() && is_complete)
        check_texts(*config, text_index_t(source, readable), m_result.findings);
}

} // namespace

result_t lint(const selection_t& selection)
{
    return linter_t(selection).run();
}

} // namespace velmolint

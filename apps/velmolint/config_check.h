#pragma once

#include "catalog.h"
#include "config_file.h"
#include "finding.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace velmolint
{

/// The ids of all texts of one source.
class text_index_t
{
public:
    text_index_t(const std::string& source, const std::vector<const catalog_t*>& catalogs);

    const std::string& source() const { return m_source; }
    /// Returns whether a catalog has the text for receivers with that prefix; for an entry without
    /// a prefix, which is for all receivers, whether any catalog has it.
    bool has(const std::string& id, const std::string& prefix) const;

private:
    std::string m_source;
    std::set<std::string> m_all;
    std::set<std::string> m_without_prefix;
    std::map<std::string, std::set<std::string>> m_by_prefix;
};

/// Checks the entries of a configuration file without its catalogs.
void check_entries(const config_file_t& config, findings_t& findings);

/// Checks that the ids in a configuration file have texts.
void check_texts(const config_file_t& config, const text_index_t& texts, findings_t& findings);

} // namespace velmolint

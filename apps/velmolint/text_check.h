#pragma once

#include "catalog.h"
#include "finding.h"
#include "pattern.h"
#include "pattern_check.h"

#include <map>
#include <string>
#include <vector>

namespace velmolint
{

/// Checks the texts of one catalog in all its languages, and compares them.
class text_check_t
{
public:
    explicit text_check_t(findings_t& findings) : m_findings(findings) {}

    /// Requires at least one catalog; all have one name.
    void check(const std::vector<const catalog_t*>& catalogs);

private:
    typedef std::map<std::string, pattern_t> patterns_t; ///< by id

    void check_support(const catalog_t& catalog);
    patterns_t check_patterns(const catalog_t& catalog);
    void compare(const catalog_t& reference, const patterns_t& reference_patterns,
                 const catalog_t& catalog, const patterns_t& patterns);

    findings_t& m_findings;
    pattern_check_t m_pattern_check;
};

} // namespace velmolint

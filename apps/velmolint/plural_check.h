#pragma once

#include "pattern.h"
#include "text_report.h"

#include <unicode/plurrule.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace velmolint
{

/// Compares the plurals of patterns with the plural rules of their languages.
class plural_check_t
{
public:
    /// Adds a finding for each category that the language needs and the pattern lacks, and for each
    /// that the pattern has and the language does not use. Does nothing if ICU does not know the
    /// language.
    void check(const plural_t& plural, const std::string& language, const text_report_t& report);

private:
    struct category_t
    {
        std::string name;
        std::vector<double> samples; ///< whole numbers of this category, not all of them
    };
    typedef std::vector<category_t> categories_t;

    static categories_t read_categories(const std::string& language, bool is_ordinal);
    const categories_t& categories(const std::string& language, bool is_ordinal);
    static bool is_covered(const category_t& category, const plural_t& plural);

    std::map<std::pair<std::string, bool>, categories_t> m_categories;
};

} // namespace velmolint

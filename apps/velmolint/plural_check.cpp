#include "plural_check.h"

#include "catalog_name.h"
#include "output_text.h"

#include <unicode/locid.h>
#include <unicode/strenum.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>

namespace velmolint
{
namespace
{

const char fallback_category[] = "other";

// Enough to see a number that a pattern does not name.
constexpr std::size_t max_samples = 100;

std::string joined(const std::set<std::string>& words)
{
    return listed(words, "\"", "\"");
}

/// Names the plural for a message.
std::string subject(const plural_t& plural)
{
    return std::string(plural.is_ordinal ? "The selectordinal" : "The plural") + " of {" +
           shortened(plural.argument) + "}";
}

std::vector<double> read_samples(const icu::PluralRules& rules, const icu::UnicodeString& category)
{
    UErrorCode status = U_ZERO_ERROR;
    std::vector<double> samples(max_samples);
    const std::int32_t count =
        const_cast<icu::PluralRules&>(rules).getSamples( // NOLINT: ICU lacks the const
            category, samples.data(), static_cast<std::int32_t>(samples.size()), status);
    samples.resize(U_SUCCESS(status) ? std::min(static_cast<std::size_t>(count), max_samples) : 0);
    samples.erase(std::remove_if(samples.begin(), samples.end(),
                                 [](double sample) { return sample != std::floor(sample); }),
                  samples.end());
    return samples;
}

} // namespace

plural_check_t::categories_t plural_check_t::read_categories(const std::string& language,
                                                             bool is_ordinal)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::PluralRules> rules(icu::PluralRules::forLocale(
        icu::Locale(language.c_str()), is_ordinal ? UPLURAL_TYPE_ORDINAL : UPLURAL_TYPE_CARDINAL,
        status));
    if (U_FAILURE(status))
        return {};
    const std::unique_ptr<icu::StringEnumeration> keywords(rules->getKeywords(status));
    categories_t result;
    while (U_SUCCESS(status)) {
        const icu::UnicodeString* const keyword = keywords->snext(status);
        if (keyword == nullptr)
            break;
        category_t category;
        keyword->toUTF8String(category.name);
        category.samples = read_samples(*rules, *keyword);
        result.push_back(std::move(category));
    }
    return result;
}

const plural_check_t::categories_t& plural_check_t::categories(const std::string& language,
                                                               bool is_ordinal)
{
    const auto key = std::make_pair(language, is_ordinal);
    const auto known = m_categories.find(key);
    if (known != m_categories.end())
        return known->second;
    return m_categories.emplace(key, read_categories(language, is_ordinal)).first->second;
}

/// Returns whether the plural has the category, or each of its numbers, as in `=1` for "one".
bool plural_check_t::is_covered(const category_t& category, const plural_t& plural)
{
    if (plural.categories.count(category.name) != 0)
        return true;
    return !category.samples.empty() &&
           std::all_of(category.samples.begin(), category.samples.end(),
                       [&](double sample) { return plural.numbers.count(sample) != 0; });
}

void plural_check_t::check(const plural_t& plural, const std::string& language,
                           const text_report_t& report)
{
    if (!is_locale(language))
        return;
    const categories_t& known = categories(language, plural.is_ordinal);
    if (known.empty())
        return;
    std::set<std::string> missing;
    std::set<std::string> unused = plural.categories;
    unused.erase(fallback_category);
    for (const category_t& category : known) {
        unused.erase(category.name);
        if (!is_covered(category, plural))
            missing.insert(category.name);
    }
    if (!missing.empty())
        report.warning("plural-missing", subject(plural) + " lacks " + joined(missing) +
                                             ", which the language " + in_quotes(language) +
                                             " needs. Add it.");
    if (!unused.empty())
        report.warning("plural-unused", subject(plural) + " has " + joined(unused) +
                                            ", which the language " + in_quotes(language) +
                                            " does not use. Remove or correct it.");
}

} // namespace velmolint

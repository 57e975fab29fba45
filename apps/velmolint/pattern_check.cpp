#include "pattern_check.h"

#include "output_text.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <vector>

namespace velmolint
{
namespace
{

typedef std::set<std::string> names_t;

names_t without(const names_t& names, const names_t& others)
{
    names_t result;
    std::set_difference(names.begin(), names.end(), others.begin(), others.end(),
                        std::inserter(result, result.end()));
    return result;
}

names_t to_set(const std::vector<std::string>& names)
{
    return {names.begin(), names.end()};
}

std::string joined(const names_t& names)
{
    return listed(names, "{", "}");
}

} // namespace

void pattern_check_t::check(const pattern_t& pattern, const std::string& language,
                            const text_report_t& report)
{
    if (!pattern.quoted_placeholders.empty())
        report.error("quoted-placeholder",
                     "An apostrophe quotes " + joined(to_set(pattern.quoted_placeholders)) +
                         ", which is shown and not replaced. Write '' for an apostrophe, and "
                         "'{' or '}' for a brace.");
    if (!pattern.is_valid()) {
        report.error(pattern.fault_check, pattern.fault);
        return;
    }
    for (const plural_t& plural : pattern.plurals)
        m_plurals.check(plural, language, report);
    check_styles(pattern, language, report);
}

void pattern_check_t::check_styles(const pattern_t& pattern, const std::string& language,
                                   const text_report_t& report)
{
    for (const typed_argument_t& argument : pattern.typed_arguments) {
        if (m_styles.is_valid(argument, language))
            continue;
        const std::string style = argument.style.empty() ? "" : ", " + argument.style;
        report.error("pattern-type",
                     "ICU knows no format " + in_quotes(argument.type + style) + " for {" +
                         shortened(argument.argument) +
                         "}, so the pattern is shown as it is. Use a type such as number or "
                         "date, with a valid style.");
    }
}

void compare_placeholders(const pattern_t& reference, const std::string& reference_language,
                          const pattern_t& translation, const text_report_t& report)
{
    if (!reference.is_valid() || !translation.is_valid())
        return;
    const names_t missing = without(without(reference.arguments, translation.arguments),
                                    to_set(translation.quoted_placeholders));
    const names_t extra = without(without(translation.arguments, reference.arguments),
                                  to_set(reference.quoted_placeholders));
    if (!missing.empty())
        report.warning("placeholder-missing", "It lacks " + joined(missing) +
                                                  ", which the text in " +
                                                  in_quotes(reference_language) + " has. Add it.");
    if (!extra.empty())
        report.error("placeholder-extra", "It has " + joined(extra) + ", which the text in " +
                                              in_quotes(reference_language) +
                                              " does not have. Correct the name.");
}

} // namespace velmolint

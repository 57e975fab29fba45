#include "filter.h"

#include <rova/strings.h>

#include <algorithm>
#include <string_view>

namespace velmolog
{
namespace
{

using namespace velmoext_1_4_8;
using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;

bool has_match(const std::vector<glob_t>& globs, std::string_view text)
{
    return std::any_of(globs.begin(), globs.end(),
                       [text](const glob_t& glob) { return glob.matches(text); });
}

std::vector<glob_t> globs_of(const std::vector<std::string>& patterns)
{
    return std::vector<glob_t>(patterns.begin(), patterns.end());
}

} // namespace

filter_t::lists_t::lists_t(const conditions_t& conditions)
    : severities(conditions.severities), types(globs_of(conditions.types)),
      sources(globs_of(conditions.sources))
{
    for (const std::string& text : conditions.arguments) {
        const std::size_t end = text.find('=');
        argument_t argument = {utf8_to_utf16(text.substr(0, end)), std::nullopt};
        if (end != std::string::npos)
            argument.value.emplace(text.substr(end + 1));
        arguments.push_back(argument);
    }
    for (const std::string& text : conditions.texts) {
        const glob_t glob(text);
        const bool is_part = glob.is_literal();
        texts.push_back({glob, is_part, is_part ? glob.literal() : std::string()});
    }
}

filter_t::filter_t(const filter_options_t& options)
    : m_wanted(options.wanted), m_unwanted(options.unwanted)
{}

bool filter_t::has_severity(const lists_t& lists, const candidate_t& candidate)
{
    return std::any_of(
        lists.severities.begin(), lists.severities.end(),
        [&candidate](message_t::severity_t least) { return candidate.severity() >= least; });
}

bool filter_t::has_argument(const lists_t& lists, candidate_t& candidate)
{
    if (lists.arguments.empty())
        return false;
    const auto arguments = candidate.entry().message->get_content().args;
    return std::any_of(
        lists.arguments.begin(), lists.arguments.end(), [&arguments](const argument_t& wanted) {
            const auto found = arguments.find(wanted.name);
            return found != arguments.end() &&
                   (!wanted.value || wanted.value->matches(utf16_to_utf8(found->second)));
        });
}

bool filter_t::has_text(const lists_t& lists, candidate_t& candidate)
{
    if (lists.texts.empty())
        return false;
    const std::string& shown = candidate.texts().text;
    return std::any_of(lists.texts.begin(), lists.texts.end(), [&shown](const text_t& wanted) {
        return wanted.is_part ? shown.find(wanted.part) != std::string::npos
                              : wanted.glob.matches(shown);
    });
}

// The conditions that need the whole message are the last ones.
bool filter_t::matches(candidate_t& candidate) const
{
    return (m_wanted.severities.empty() || has_severity(m_wanted, candidate)) &&
           !has_severity(m_unwanted, candidate) &&
           (m_wanted.types.empty() || has_match(m_wanted.types, candidate.type())) &&
           !has_match(m_unwanted.types, candidate.type()) &&
           (m_wanted.sources.empty() || has_match(m_wanted.sources, candidate.source())) &&
           !has_match(m_unwanted.sources, candidate.source()) &&
           (m_wanted.arguments.empty() || has_argument(m_wanted, candidate)) &&
           !has_argument(m_unwanted, candidate) &&
           (m_wanted.texts.empty() || has_text(m_wanted, candidate)) &&
           !has_text(m_unwanted, candidate);
}

} // namespace velmolog

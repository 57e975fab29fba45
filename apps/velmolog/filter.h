#pragma once

#include "candidate.h"
#include "glob.h"
#include "options.h"

#include <optional>
#include <string>
#include <vector>

namespace velmolog
{

/// The messages that the options want.
class filter_t
{
public:
    explicit filter_t(const filter_options_t& options);

    bool matches(candidate_t& candidate) const;

private:
    struct argument_t
    {
        std::wstring name;
        std::optional<glob_t> value; ///< any value without it
    };
    /// A text without a wildcard is searched in the text.
    struct text_t
    {
        glob_t glob;
        bool is_part;
        std::string part;
    };
    struct lists_t
    {
        explicit lists_t(const conditions_t& conditions);

        std::vector<velmoext_1_4_8::message_t::severity_t> severities;
        std::vector<glob_t> types;
        std::vector<glob_t> sources;
        std::vector<argument_t> arguments;
        std::vector<text_t> texts;
    };

    static bool has_severity(const lists_t& lists, const candidate_t& candidate);
    static bool has_argument(const lists_t& lists, candidate_t& candidate);
    static bool has_text(const lists_t& lists, candidate_t& candidate);

    lists_t m_wanted;
    lists_t m_unwanted;
};

} // namespace velmolog

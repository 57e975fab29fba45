#pragma once

#include <set>
#include <string>
#include <vector>

namespace velmolint
{

/// A plural or an order in a pattern.
struct plural_t
{
    std::string argument;
    bool is_ordinal = false;
    std::set<std::string> categories; ///< such as "one"
    std::set<double> numbers;         ///< those of `=1`
};

/// An argument with a type, such as `{size, number, integer}`.
struct typed_argument_t
{
    std::string argument;
    std::string type;
    std::string style; ///< empty if there is none
};

/// A pattern of ICU's MessageFormat, taken apart.
struct pattern_t
{
    std::string fault_check; ///< name of the check that failed, empty if the pattern is valid
    std::string fault;       ///< message of that check

    std::set<std::string> arguments;
    std::vector<plural_t> plurals;
    std::vector<typed_argument_t> typed_arguments;
    std::vector<std::string> quoted_placeholders; ///< such as "path" in `'{path}'`

    bool is_valid() const { return fault_check.empty(); }
};

/// Parses a pattern in UTF-8.
pattern_t parse_pattern(const std::string& text);

} // namespace velmolint

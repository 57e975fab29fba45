#pragma once

#include "pattern.h"

#include <map>
#include <string>
#include <tuple>

namespace velmolint
{

/// Checks the types and styles of arguments, such as `number` and `integer`.
class style_check_t
{
public:
    /// Returns whether ICU can format the argument. Returns true for a style that is new if very
    /// many have been checked, since ICU creates a format for each.
    bool is_valid(const typed_argument_t& argument, const std::string& language);

private:
    typedef std::tuple<std::string, std::string, std::string> key_t;

    std::map<key_t, bool> m_known;
};

} // namespace velmolint

#include "style_check.h"

#include <unicode/locid.h>
#include <unicode/msgfmt.h>
#include <unicode/parseerr.h>
#include <unicode/unistr.h>

#include <cstddef>

namespace velmolint
{
namespace
{

constexpr std::size_t max_styles = 2000;
constexpr std::size_t max_style_bytes = 1000;

bool can_format(const typed_argument_t& argument, const std::string& language)
{
    std::string pattern = "{x, " + argument.type;
    if (!argument.style.empty())
        pattern += "," + argument.style;
    UErrorCode status = U_ZERO_ERROR;
    UParseError error = {};
    const icu::MessageFormat format(icu::UnicodeString::fromUTF8(pattern + "}"),
                                    icu::Locale(language.c_str()), error, status);
    return U_SUCCESS(status);
}

} // namespace

bool style_check_t::is_valid(const typed_argument_t& argument, const std::string& language)
{
    const key_t key(language, argument.type, argument.style);
    const auto known = m_known.find(key);
    if (known != m_known.end())
        return known->second;
    if (m_known.size() == max_styles ||
        argument.type.size() + argument.style.size() > max_style_bytes)
        return true;
    return m_known.emplace(key, can_format(argument, language)).first->second;
}

} // namespace velmolint

#include "locale_name.h"

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <algorithm>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

// BCP 47 limits variants to these lengths. The modifier "euro" is shorter.
constexpr std::size_t min_variant = 5;
constexpr std::size_t max_variant = 8;

/// Returns the locale of a name without an encoding and a modifier, with another script or variant.
icu::Locale with_parts(const std::string& name, const std::string& script,
                       const std::string& variant)
{
    const icu::Locale base(name.c_str());
    std::string language = base.getLanguage();
    if (*base.getScript() != '\0')
        language += std::string("_") + base.getScript();
    else if (!script.empty())
        language += "_" + script;
    return icu::Locale(language.c_str(), base.getCountry(),
                       variant.empty() ? base.getVariant() : variant.c_str());
}

} // namespace

icu::Locale to_icu_locale(const std::string& name)
{
    const std::size_t at = std::min(name.find('@'), name.size());
    const std::string modifier = name.substr(std::min(at + 1, name.size()));
    if (modifier.find('=') != std::string::npos)
        return icu::Locale(name.c_str());
    const std::string base = name.substr(0, std::min(at, name.find('.')));
    const auto script = modifier.empty() ? std::int32_t{UCHAR_INVALID_CODE}
                                         : u_getPropertyValueEnum(UCHAR_SCRIPT, modifier.c_str());
    if (script != UCHAR_INVALID_CODE)
        return with_parts(base, uscript_getShortName(static_cast<UScriptCode>(script)), "");
    const bool is_variant = modifier.size() >= min_variant && modifier.size() <= max_variant;
    return is_variant ? with_parts(base, "", modifier) : icu::Locale(base.c_str());
}

} // namespace i18n
} // namespace ROVA_2_18

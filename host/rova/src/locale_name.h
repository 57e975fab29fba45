#pragma once

#include <unicode/locid.h>

#include <string>

namespace ROVA_2_18
{
namespace i18n
{

/// Returns ICU's locale for a name as in the environment, such as "sr_RS.UTF-8@latin", or for ICU's
/// own name. A modifier becomes a script ("Latn") or a variant ("VALENCIA"); any other is dropped,
/// such as "euro".
icu::Locale to_icu_locale(const std::string& name);

} // namespace i18n
} // namespace ROVA_2_18

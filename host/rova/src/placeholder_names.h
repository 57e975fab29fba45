#pragma once

#include <unicode/unistr.h>

#include <map>

namespace ROVA_2_18
{
namespace i18n
{

/// A pattern whose placeholders have names that ICU accepts.
struct renamed_pattern_t
{
    icu::UnicodeString pattern;
    std::map<icu::UnicodeString, icu::UnicodeString> names; ///< the original names, by the new ones
};

/// Replaces the placeholders' names that ICU refuses, such as "file-name" and "007". A name extends
/// to the next comma or brace; one with an apostrophe is not replaced. Requires a limited depth of
/// braces.
renamed_pattern_t rename_placeholders(const icu::UnicodeString& pattern);

} // namespace i18n
} // namespace ROVA_2_18

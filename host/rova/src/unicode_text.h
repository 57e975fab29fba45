#pragma once

#include <unicode/unistr.h>

#include <string>

namespace ROVA_2_18
{
namespace strings
{

/// Returns whether a text is short enough for ICU. ICU's lengths have 32 bits, and a result may be
/// several times as long as its text.
bool fits_unicode(const std::wstring& text);

/// Returns the same code units. An element beyond the BMP becomes two units, one beyond U+10FFFF
/// becomes U+FFFD. Requires that fits_unicode() is true.
icu::UnicodeString to_unicode(const std::wstring& text);

/// Returns the same code units. Throws std::bad_alloc if the text is bogus: ICU marks it so on
/// allocation failure.
std::wstring from_unicode(const icu::UnicodeString& text);

} // namespace strings
} // namespace ROVA_2_18

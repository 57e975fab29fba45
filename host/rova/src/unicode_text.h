#pragma once

#include <unicode/unistr.h>

#include <string>

namespace ROVA_2_18
{
namespace strings
{

/// ICU's lengths have 32 bits; what is made of a text may be several times as long.
bool fits_unicode(const std::wstring& text);

/// The same code units; a single element beyond the BMP gives two, one past U+10FFFF gives U+FFFD.
/// The text has to fit.
icu::UnicodeString to_unicode(const std::wstring& text);

/// ICU marks a text for which it found no memory: then, as anywhere, std::bad_alloc is thrown.
std::wstring from_unicode(const icu::UnicodeString& text);

} // namespace strings
} // namespace ROVA_2_18

/// @file
/// Wide text and its conversions.
///
/// A wide string contains UTF-16 code units, also if `wchar_t` has 32 bits. Conversions also accept
/// a single element beyond the BMP, as in a native wide literal. They throw std::bad_alloc only.
/// Any thread may call them at any time.
#pragma once

#include <rova/export.h>

#include <string>

namespace ROVA_2_18
{
namespace strings
{

typedef std::wstring ustring16;

/// Converts to UTF-8. Replaces an unpaired surrogate, or an element beyond U+10FFFF, by U+FFFD.
ROVA_API std::string utf16_to_utf8(const std::wstring& text);

/// Converts from UTF-8. Replaces malformed UTF-8 by U+FFFD, once for each maximal prefix of a
/// character.
ROVA_API std::wstring utf8_to_utf16(const std::string& text);

/// Converts to upper case, by the full mapping of the root locale: the text can become longer.
/// Keeps an unpaired surrogate, or an element beyond U+10FFFF, unchanged.
ROVA_API std::wstring to_upper(const std::wstring& text);

} // namespace strings
} // namespace ROVA_2_18

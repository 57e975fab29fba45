/// @file
/// Wide text and its conversions.
///
/// A wide string holds UTF-16 code units, also where `wchar_t` has 32 bits. Where text is written,
/// a single element beyond the BMP, as a native wide literal gives it, counts as its character.
/// Nothing here throws but for lack of memory, and any thread may call at any time.
#pragma once

#include <rova/export.h>

#include <string>

namespace ROVA_2_18
{
namespace strings
{

typedef std::wstring ustring16;

/// An unpaired surrogate, or an element past U+10FFFF, becomes U+FFFD.
ROVA_API std::string utf16_to_utf8(const std::wstring& text);

/// A byte sequence that is no UTF-8 becomes U+FFFD, once for each longest part that could have
/// begun a character.
ROVA_API std::wstring utf8_to_utf16(const std::string& text);

/// The full upper case of the root locale, whatever the process's locale is: the text may grow. An
/// unpaired surrogate, or an element past U+10FFFF, stays as it is.
ROVA_API std::wstring to_upper(const std::wstring& text);

} // namespace strings
} // namespace ROVA_2_18

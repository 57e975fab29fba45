/// @file
#pragma once

#include <string>

namespace audit
{

/// Returns a path's bytes as text. Readable characters stay: all of UTF-8 but control characters
/// and characters that XML does not allow. All other bytes become `\xHH`, and a backslash becomes
/// two, so that two paths never have the same text.
std::wstring path_text(const std::string& path);

/// Whether a name's text needs no `\xHH`.
bool is_printable(const std::string& name);

} // namespace audit

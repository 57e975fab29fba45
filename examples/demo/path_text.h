/// @file
#pragma once

#include <string>

namespace audit
{

/// A path's bytes as text. What is readable stays: any character in UTF-8 but control characters
/// and those that XML does not know. All other bytes become `\xHH`, and a backslash becomes two, so
/// that two paths never have the same text.
std::wstring path_text(const std::string& path);

/// Whether a name's text needs no `\xHH`.
bool is_printable(const std::string& name);

} // namespace audit

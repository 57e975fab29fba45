/// @file
#pragma once

#include <string>

namespace audit
{

/// A text in UTF-8 that is safe on a terminal and stays on its line: control characters, line
/// separators and what turns the direction of writing become `\xHH` for each byte. So do quotation
/// marks, so that the text can stand between two of them. Backslashes stay.
std::string terminal_text(const std::wstring& text);

} // namespace audit

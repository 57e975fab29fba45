/// @file
#pragma once

#include <string>

namespace audit
{

/// Returns a text in UTF-8 that is safe on a terminal and stays on its line. Control characters,
/// line separators and characters that change the direction of writing become `\xHH` for each byte.
/// Quotation marks do too, so that the text can be quoted. Backslashes stay.
std::string terminal_text(const std::wstring& text);

} // namespace audit

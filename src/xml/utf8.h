#pragma once

#include <string>
#include <string_view>

namespace velmoext_1_4_8
{

/// Returns what ROVA_2_18::strings::utf8_to_utf16() does. Most texts of messages are short and
/// ASCII, and converted without a string in between.
std::wstring utf8_to_wide(std::string_view utf8);

bool is_ascii(std::string_view utf8);

/// Converts ASCII.
inline std::wstring ascii_to_wide(std::string_view ascii)
{
    return std::wstring(ascii.begin(), ascii.end());
}

} // namespace velmoext_1_4_8

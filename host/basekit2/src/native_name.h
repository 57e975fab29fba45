#pragma once

#include <rova/strings.h>

#include <string>

namespace basekit2
{

inline bool holds_zero(const std::wstring& text)
{
    return text.find(L'\0') != std::wstring::npos;
}

/// Returns the system's name for a path's text. Returns an empty text, which never names a file, if
/// the path contains a zero character: the system would read only the part before it.
inline std::string native_name(const std::wstring& text)
{
    if (holds_zero(text))
        return std::string();
    return ROVA_2_18::strings::utf16_to_utf8(text);
}

} // namespace basekit2

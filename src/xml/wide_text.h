#pragma once

#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{

/// What ROVA_2_18::strings::utf8_to_utf16() makes of these bytes. Most texts of messages are short
/// and ASCII: those need no string to be decoded from.
std::wstring wide_text(const char* utf8, std::size_t size);

/// The same up to the terminating zero.
std::wstring wide_text(const char* utf8);

} // namespace velmoext_1_4_8

#include "wide_text.h"

#include <rova/strings.h>

#include <algorithm>
#include <cstring>

namespace velmoext_1_4_8
{
namespace
{

bool is_ascii(char byte)
{
    return (static_cast<unsigned char>(byte) & 0x80U) == 0;
}

} // namespace

std::wstring wide_text(const char* utf8, std::size_t size)
{
    if (std::all_of(utf8, utf8 + size, is_ascii))
        return std::wstring(utf8, utf8 + size);
    return ROVA_2_18::strings::utf8_to_utf16(std::string(utf8, size));
}

std::wstring wide_text(const char* utf8)
{
    return wide_text(utf8, std::strlen(utf8));
}

} // namespace velmoext_1_4_8

#include "xml/wide_text.h"

#include <rova/strings.h>

#include <cstdint>
#include <cstring>

namespace velmoext_1_4_8
{
namespace
{

constexpr std::size_t block_size = 8;

std::uint64_t block_at(const char* utf8)
{
    std::uint64_t block = 0;
    std::memcpy(&block, utf8, block_size);
    return block;
}

// Longer texts go by blocks, the last of which may overlap the one before.
bool is_ascii(const char* utf8, std::size_t size)
{
    std::uint64_t bits = 0;
    if (size < block_size) {
        for (std::size_t i = 0; i != size; ++i)
            bits |= static_cast<unsigned char>(utf8[i]);
    } else {
        for (std::size_t i = 0; i < size - block_size; i += block_size)
            bits |= block_at(utf8 + i);
        bits |= block_at(utf8 + size - block_size);
    }
    return (bits & 0x8080808080808080U) == 0;
}

// Apart, since its string would cost the other texts more than their look does.
[[gnu::noinline]] std::wstring decode(const char* utf8, std::size_t size)
{
    return ROVA_2_18::strings::utf8_to_utf16(std::string(utf8, size));
}

} // namespace

std::wstring wide_text(const char* utf8, std::size_t size)
{
    return is_ascii(utf8, size) ? std::wstring(utf8, utf8 + size) : decode(utf8, size);
}

std::wstring wide_text(const char* utf8)
{
    return wide_text(utf8, std::strlen(utf8));
}

} // namespace velmoext_1_4_8

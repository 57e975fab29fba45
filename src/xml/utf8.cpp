#include "xml/utf8.h"

#include <rova/strings.h>

#include <cstddef>
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

// Apart, since its string would cost the other texts more than their check does.
[[gnu::noinline]] std::wstring decode(std::string_view utf8)
{
    return ROVA_2_18::strings::utf8_to_utf16(std::string(utf8));
}

} // namespace

// Longer texts go by blocks, the last of which may overlap the one before.
bool is_ascii(std::string_view utf8)
{
    std::uint64_t bits = 0;
    if (utf8.size() < block_size) {
        for (const char byte : utf8)
            bits |= static_cast<unsigned char>(byte);
    } else {
        const char* const begin = utf8.data();
        const char* const last = begin + utf8.size() - block_size;
        for (const char* at = begin; at < last; at += block_size)
            bits |= block_at(at);
        bits |= block_at(last);
    }
    return (bits & 0x8080808080808080U) == 0;
}

std::wstring utf8_to_wide(std::string_view utf8)
{
    return is_ascii(utf8) ? ascii_to_wide(utf8) : decode(utf8);
}

} // namespace velmoext_1_4_8

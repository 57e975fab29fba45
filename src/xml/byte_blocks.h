#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace velmoext_1_4_8
{

/// Eight bytes of a text, which are checked together.
typedef std::uint64_t byte_block_t;

/// A block of eight times the same byte.
constexpr byte_block_t block_of(char byte)
{
    return 0x0101010101010101U * static_cast<unsigned char>(byte);
}

/// Returns a block whose high bits are all zero if the block is ASCII and all its bytes are at
/// least this one.
constexpr byte_block_t find_less(byte_block_t block, char byte)
{
    return block | (block - block_of(byte));
}

/// Returns a block whose high bits are all zero if the block, which is ASCII, has no such byte.
constexpr byte_block_t find_equal(byte_block_t block, char byte)
{
    return (block ^ block_of(byte)) - block_of(1);
}

/// Returns whether the high bits of what `look` returns are zero for each block of the text. The
/// last block overlaps the one before, and a short text is filled up with spaces.
template <typename Look>
bool has_no_high_bits(std::string_view text, const Look& look)
{
    static constexpr std::size_t size = sizeof(byte_block_t);
    byte_block_t bits = 0;
    if (text.size() < size) {
        byte_block_t block = block_of(' ');
        for (const char byte : text)
            block = (block << 8U) | static_cast<unsigned char>(byte);
        bits = look(block);
    } else {
        const auto look_at = [&](const char* bytes) {
            byte_block_t block = 0;
            std::memcpy(&block, bytes, size);
            bits |= look(block);
        };
        const char* const last = text.data() + text.size() - size;
        for (const char* at = text.data(); at < last; at += size)
            look_at(at);
        look_at(last);
    }
    return (bits & block_of('\x80')) == 0;
}

} // namespace velmoext_1_4_8

#include "xml/utf8.h"

#include "xml/byte_blocks.h"

#include <rova/strings.h>

namespace velmoext_1_4_8
{
namespace
{

// Apart, since its string would cost the other texts more than their check does.
[[gnu::noinline]] std::wstring decode(std::string_view utf8)
{
    return ROVA_2_18::strings::utf8_to_utf16(std::string(utf8));
}

} // namespace

bool is_ascii(std::string_view utf8)
{
    return has_no_high_bits(utf8, [](byte_block_t block) { return block; });
}

std::wstring utf8_to_wide(std::string_view utf8)
{
    return is_ascii(utf8) ? ascii_to_wide(utf8) : decode(utf8);
}

} // namespace velmoext_1_4_8

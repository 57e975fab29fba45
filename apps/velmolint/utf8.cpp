#include "utf8.h"

#include <unicode/utf8.h>

namespace velmolint
{

UChar32 next_character(const std::string& text, std::size_t& next)
{
    UChar32 character = 0;
// ICU's macro converts implicitly.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
    U8_NEXT(text.data(), next, text.size(), character);
#pragma GCC diagnostic pop
    return character;
}

} // namespace velmolint

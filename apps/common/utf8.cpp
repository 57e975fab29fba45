#include "common/utf8.h"

#include <unicode/utf8.h>

namespace app_common
{

UChar32 next_character(std::string_view text, std::size_t& next)
{
    const char* const bytes = text.data();
    UChar32 character = 0;
// ICU's macro converts implicitly.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
    U8_NEXT(bytes, next, text.size(), character);
#pragma GCC diagnostic pop
    return character;
}

} // namespace app_common

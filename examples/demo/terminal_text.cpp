#include "terminal_text.h"

#include "escape.h"
#include "library_names.h"

#include <rova/strings.h>

#include <algorithm>
#include <iterator>

namespace audit
{
namespace
{

struct range_t
{
    wchar_t first;
    wchar_t last;
};

const range_t hidden_characters[] = {{0, 0x1F},        {0x7F, 0x9F},     {0x61C, 0x61C},
                                     {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x206F}};

bool is_hidden(wchar_t unit)
{
    return std::any_of(
        std::begin(hidden_characters), std::end(hidden_characters),
        [=](const range_t& range) { return range.first <= unit && unit <= range.last; });
}

} // namespace

std::string terminal_text(const std::wstring& text)
{
    using rova::strings::utf16_to_utf8;
    std::string shown;
    auto rest = text.begin();
    while (rest != text.end()) {
        const auto hidden = std::find_if(rest, text.end(), is_hidden);
        shown += utf16_to_utf8(std::wstring(rest, hidden));
        if (hidden == text.end())
            break;
        shown += escape(utf16_to_utf8(std::wstring(1, *hidden)));
        rest = std::next(hidden);
    }
    return shown;
}

} // namespace audit

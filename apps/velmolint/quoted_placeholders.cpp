#include "quoted_placeholders.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <set>

namespace velmolint
{
namespace
{

typedef std::set<std::int32_t> offsets_t;

/// Returns the offsets of the characters that ICU skips: apostrophes around quoted texts, and the
/// second one of two.
offsets_t skipped_offsets(const icu::MessagePattern& pattern)
{
    offsets_t offsets;
    for (std::int32_t i = 0; i != pattern.countParts(); ++i)
        if (pattern.getPartType(i) == UMSGPAT_PART_TYPE_SKIP_SYNTAX)
            offsets.insert(pattern.getPart(i).getIndex());
    return offsets;
}

bool is_name_character(char16_t unit)
{
    return u_isalnum(unit) != 0 || unit == u'_' || unit == u'-' || unit == u'.';
}

/// Adds each name between "{" and "}" or ",".
void add_names(const icu::UnicodeString& text, std::vector<std::string>& names)
{
    for (std::int32_t i = text.indexOf(u'{'); i >= 0; i = text.indexOf(u'{', i + 1)) {
        std::int32_t end = i + 1;
        while (end != text.length() && is_name_character(text[end]))
            ++end;
        if (end == i + 1 || end == text.length() || (text[end] != u'}' && text[end] != u','))
            continue;
        names.emplace_back();
        text.tempSubStringBetween(i + 1, end).toUTF8String(names.back());
    }
}

} // namespace

std::vector<std::string> find_quoted_placeholders(const icu::MessagePattern& pattern)
{
    const icu::UnicodeString& text = pattern.getPatternString();
    const offsets_t skipped = skipped_offsets(pattern);
    std::vector<std::string> names;
    std::int32_t begin = -1; // of the quoted text; negative outside of one
    for (const std::int32_t offset : skipped) {
        const bool is_second =
            offset != 0 && text[offset - 1] == u'\'' && skipped.count(offset - 1) == 0;
        if (is_second)
            continue;
        if (begin >= 0)
            add_names(text.tempSubStringBetween(begin, offset), names);
        begin = begin < 0 ? offset + 1 : -1;
    }
    if (begin >= 0)
        add_names(text.tempSubString(begin), names);
    return names;
}

} // namespace velmolint

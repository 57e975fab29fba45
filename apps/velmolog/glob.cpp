#include "glob.h"

#include "common/utf8.h"

#include <algorithm>
#include <cstddef>

namespace velmolog
{
namespace
{

constexpr char32_t replacement = 0xFFFD;
constexpr std::size_t none = std::string::npos;

char32_t character_at(std::string_view text, std::size_t& next)
{
    const auto byte = static_cast<unsigned char>(text[next]);
    if (byte < 0x80) {
        ++next;
        return byte;
    }
    const UChar32 character = app_common::next_character(text, next);
    return character < 0 ? replacement : static_cast<char32_t>(character);
}

void append_utf8(std::string& text, char32_t character)
{
    const auto byte = [&text](char32_t bits) {
        text += static_cast<char>(bits);
    };
    if (character < 0x80) {
        byte(character);
    } else if (character < 0x800) {
        byte(0xC0 | character >> 6U);
        byte(0x80 | (character & 0x3FU));
    } else {
        if (character < 0x10000) {
            byte(0xE0 | character >> 12U);
        } else {
            byte(0xF0 | character >> 18U);
            byte(0x80 | (character >> 12U & 0x3FU));
        }
        byte(0x80 | (character >> 6U & 0x3FU));
        byte(0x80 | (character & 0x3FU));
    }
}

/// Returns the end of the set that begins at `begin`, or npos if it has no end. A bracket right
/// after the beginning belongs to the set.
std::size_t end_of_set(const std::u32string& pattern, std::size_t begin)
{
    std::size_t next = begin + 1;
    if (next < pattern.size() && (pattern[next] == U'!' || pattern[next] == U'^'))
        ++next;
    for (const std::size_t first = next; next < pattern.size(); ++next) {
        if (pattern[next] == U'\\')
            ++next;
        else if (pattern[next] == U']' && next != first)
            return next;
    }
    return none;
}

} // namespace

std::u32string characters_of(std::string_view text)
{
    std::u32string characters;
    for (std::size_t next = 0; next != text.size();)
        characters += character_at(text, next);
    return characters;
}

bool glob_t::element_t::accepts(char32_t character) const
{
    const bool is_listed =
        std::any_of(ranges.begin(), ranges.end(), [character](const range_t& range) {
            return range.first <= character && character <= range.last;
        });
    return is_listed != is_negated;
}

glob_t::element_t glob_t::single(char32_t character)
{
    return {element_t::kind_t::character, false, {{character, character}}};
}

/// Reads the set that begins at `next`, which has an end, and moves `next` after it.
glob_t::element_t glob_t::read_set(const std::u32string& pattern, std::size_t& next)
{
    const std::size_t end = end_of_set(pattern, next);
    element_t set = {element_t::kind_t::set, false, {}};
    ++next;
    if (pattern[next] == U'!' || pattern[next] == U'^') {
        set.is_negated = true;
        ++next;
    }
    const auto take = [&pattern, &next]() {
        if (pattern[next] == U'\\')
            ++next;
        return pattern[next++];
    };
    while (next != end) {
        const char32_t first = take();
        char32_t last = first;
        if (next + 1 < end && pattern[next] == U'-') {
            ++next;
            last = take();
        }
        set.ranges.push_back({first, last});
    }
    next = end + 1;
    return set;
}

glob_t::glob_t(std::string_view pattern)
{
    const std::u32string characters = characters_of(pattern);
    for (std::size_t next = 0; next < characters.size();) {
        const char32_t character = characters[next];
        if (character == U'*') {
            m_elements.push_back({element_t::kind_t::any_text, false, {}});
            ++next;
        } else if (character == U'?') {
            m_elements.push_back({element_t::kind_t::set, true, {}});
            ++next;
        } else if (character == U'[' && end_of_set(characters, next) != none) {
            m_elements.push_back(read_set(characters, next));
        } else {
            if (character == U'\\' && next + 1 != characters.size())
                ++next;
            m_elements.push_back(single(characters[next++]));
        }
    }
}

// After a mismatch, only the last `*` takes one more character: an earlier one would only give the
// later elements less text. So no combination is tried twice.
bool glob_t::matches(std::string_view text) const
{
    std::size_t element = 0;
    std::size_t next = 0;
    std::size_t star = none;
    std::size_t star_end = 0;
    while (next != text.size()) {
        const bool has_element = element != m_elements.size();
        if (has_element && m_elements[element].kind == element_t::kind_t::any_text) {
            star = element++;
            star_end = next;
            continue;
        }
        std::size_t after = next;
        if (has_element && m_elements[element].accepts(character_at(text, after))) {
            ++element;
            next = after;
            continue;
        }
        if (star == none)
            return false;
        character_at(text, star_end);
        next = star_end;
        element = star + 1;
    }
    return std::all_of(
        m_elements.begin() + static_cast<std::ptrdiff_t>(element), m_elements.end(),
        [](const element_t& rest) { return rest.kind == element_t::kind_t::any_text; });
}

bool glob_t::is_literal() const
{
    return std::all_of(m_elements.begin(), m_elements.end(), [](const element_t& element) {
        return element.kind == element_t::kind_t::character;
    });
}

std::string glob_t::literal() const
{
    std::string text;
    for (const element_t& element : m_elements)
        append_utf8(text, element.ranges[0].first);
    return text;
}

} // namespace velmolog

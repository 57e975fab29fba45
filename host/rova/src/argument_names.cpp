#include "argument_names.h"

#include <unicode/locid.h>

#include <algorithm>
#include <string>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

// ICU formats nested texts recursively, with more than 2 KiB of stack per level. Counting braces is
// not enough: the texts of a choice have none.
constexpr std::int32_t max_nested_texts = 50;
constexpr std::size_t max_names = 1000;
// ICU writes a text for each use of an argument, which takes at least a microsecond.
constexpr std::size_t max_placeholders = 10000;
// ICU searches all names at each use of an argument. Long names with small differences take
// longest.
constexpr std::size_t max_comparisons = 2000000;
// ICU creates a format for each use with a type, which may take 100 KiB.
constexpr std::size_t max_typed_uses = 1000;

bool is_digit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

/// Returns whether the exponent is above 99 or below -99.
bool is_large_exponent(const icu::UnicodeString& style, std::int32_t digits)
{
    if (style.charAt(digits) == u'+' || style.charAt(digits) == u'-')
        ++digits;
    while (style.charAt(digits) == u'0')
        ++digits;
    return is_digit(style.charAt(digits)) && is_digit(style.charAt(digits + 1)) &&
           is_digit(style.charAt(digits + 2));
}

/// Returns whether a skeleton may scale or round a number by a large power of ten. The result could
/// have billions of digits.
bool has_large_power(const icu::UnicodeString& style)
{
    if (style.indexOf(u"::", 2, 0) < 0)
        return false;
    for (std::int32_t i = 0; i != style.length(); ++i) {
        const char16_t unit = style.charAt(i);
        if ((unit == u'e' || unit == u'E') && is_large_exponent(style, i + 1))
            return true;
    }
    return false;
}

void add_number_use(argument_uses_t& uses, bool is_date)
{
    uses.is_date = is_date && (uses.is_date || !uses.is_number);
    uses.is_number = true;
}

} // namespace

argument_names_t::argument_names_t(const icu::MessagePattern& pattern,
                                   const renamed_pattern_t& renamed)
    : m_pattern(pattern), m_renamed(renamed)
{
    for (std::int32_t i = 0; i != pattern.countParts() && !exceeds_limits(); ++i)
        add_part(i);
    for (auto& entry : m_names)
        rename(entry.second);
}

bool argument_names_t::exceeds_limits() const
{
    const std::size_t uses = m_text_uses + m_number_uses;
    return m_names.size() > max_names || uses > max_placeholders ||
           m_names.size() * uses > max_comparisons || m_typed_uses > max_typed_uses ||
           m_nested_texts > max_nested_texts || m_has_large_power;
}

icu::UnicodeString argument_names_t::renamed_pattern() const
{
    icu::UnicodeString result;
    std::int32_t copied = 0;
    for (std::int32_t i = 0; i != m_pattern.countParts(); ++i) {
        if (m_pattern.getPart(i).getType() == UMSGPAT_PART_TYPE_ARG_START)
            copied = copy_argument(i, copied, result);
    }
    return result.append(m_pattern.getPatternString(), copied, INT32_MAX);
}

icu::UnicodeString argument_names_t::name_at(std::int32_t start) const
{
    return m_pattern.getSubstring(m_pattern.getPart(start + 1));
}

void argument_names_t::add_part(std::int32_t index)
{
    const auto& part = m_pattern.getPart(index);
    if (part.getType() == UMSGPAT_PART_TYPE_ARG_START)
        add_argument(index);
    else if (part.getType() == UMSGPAT_PART_TYPE_ARG_TYPE)
        add_type(m_pattern.getSubstring(part).toLower(icu::Locale::getRoot()));
    else if (part.getType() == UMSGPAT_PART_TYPE_ARG_STYLE)
        add_style(m_pattern.getSubstring(part));
    else if (part.getType() == UMSGPAT_PART_TYPE_REPLACE_NUMBER)
        ++m_number_uses;
    else if (part.getType() == UMSGPAT_PART_TYPE_MSG_START)
        m_nested_texts = std::max(m_nested_texts, part.getValue());
}

void argument_names_t::add_argument(std::int32_t start)
{
    const auto type = m_pattern.getPart(start).getArgType();
    const icu::UnicodeString name = name_at(start);
    const auto renamed = m_renamed.names.find(name);
    argument_uses_t& uses = m_names[name];
    uses.original_name = renamed == m_renamed.names.end() ? name : renamed->second;
    ++(type == UMSGPAT_ARG_TYPE_NONE ? m_text_uses : m_number_uses);
    if (type == UMSGPAT_ARG_TYPE_NONE)
        ++uses.text_uses;
    else if (type == UMSGPAT_ARG_TYPE_SELECT)
        uses.is_selector = true;
    else
        add_number_use(uses, type == UMSGPAT_ARG_TYPE_SIMPLE && is_date(start));
}

// After the start and the name of an argument, the pattern has the type.
bool argument_names_t::is_date(std::int32_t start) const
{
    const icu::UnicodeString type =
        m_pattern.getSubstring(m_pattern.getPart(start + 2)).toLower(icu::Locale::getRoot());
    return type == u"date" || type == u"time";
}

void argument_names_t::add_type(const icu::UnicodeString& type)
{
    ++m_typed_uses;
    if (type != u"number" && type != u"date" && type != u"time")
        m_need_rules = true;
}

void argument_names_t::add_style(const icu::UnicodeString& style)
{
    m_number_uses += static_cast<std::size_t>(style.length());
    m_has_large_power = m_has_large_power || has_large_power(style);
}

void argument_names_t::rename(argument_uses_t& uses)
{
    if (uses.is_number && uses.text_uses != 0)
        uses.text_name = new_name();
    if (uses.is_number && uses.is_selector)
        uses.selector_name = new_name();
}

icu::UnicodeString argument_names_t::new_name()
{
    icu::UnicodeString name;
    do {
        name = icu::UnicodeString(u'\xE000').append(
            icu::UnicodeString::fromUTF8(std::to_string(m_next_number++)));
    } while (m_names.find(name) != m_names.end());
    return name;
}

std::int32_t argument_names_t::copy_argument(std::int32_t start, std::int32_t copied,
                                             icu::UnicodeString& result) const
{
    const auto& uses = m_names.find(name_at(start))->second;
    const auto type = m_pattern.getPart(start).getArgType();
    if (type == UMSGPAT_ARG_TYPE_NONE && !uses.text_name.isEmpty())
        return copy_text(start, copied, uses.text_name, result);
    if (type == UMSGPAT_ARG_TYPE_SELECT && !uses.selector_name.isEmpty())
        return copy_select(start, copied, uses.selector_name, result);
    return copied;
}

std::int32_t argument_names_t::copy_text(std::int32_t start, std::int32_t copied,
                                         const icu::UnicodeString& new_name,
                                         icu::UnicodeString& result) const
{
    const auto& name = m_pattern.getPart(start + 1);
    result.append(m_pattern.getPatternString(), copied, name.getIndex() - copied);
    result.append(new_name);
    return name.getLimit();
}

/// Adds a branch, named by the new name, that is selected if the argument is missing. It writes the
/// argument's original name in braces, all in apostrophes.
std::int32_t argument_names_t::copy_select(std::int32_t start, std::int32_t copied,
                                           const icu::UnicodeString& new_name,
                                           icu::UnicodeString& result) const
{
    const std::int32_t name_end = copy_text(start, copied, new_name, result);
    const std::int32_t selector = m_pattern.getPart(start + 2).getIndex();
    result.append(m_pattern.getPatternString(), name_end, selector - name_end);
    icu::UnicodeString name = m_names.find(name_at(start))->second.original_name;
    name.findAndReplace(u"'", u"''");
    result.append(new_name).append(u"{'{").append(name).append(u"}'} ");
    return selector;
}

} // namespace i18n
} // namespace ROVA_2_18

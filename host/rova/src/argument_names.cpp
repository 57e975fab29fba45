#include "argument_names.h"

#include <algorithm>
#include <string>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

// ICU formats what is nested by recursion, and takes more than 2 KiB of stack for each text within
// a text. Those of a choice stand there without braces of their own.
constexpr std::int32_t max_nested_texts = 50;
// ICU looks a name up among all, at each place.
constexpr std::size_t max_names = 1000;
// ICU makes a format of its own for each place, which may take 100 KiB.
constexpr std::size_t max_typed_places = 1000;

void add_use(argument_uses_t& uses, UMessagePatternArgType type)
{
    if (type == UMSGPAT_ARG_TYPE_NONE)
        uses.is_text = true;
    else if (type == UMSGPAT_ARG_TYPE_SELECT)
        uses.is_selector = true;
    else
        uses.is_number = true;
}

} // namespace

argument_names_t::argument_names_t(const icu::MessagePattern& pattern) : m_pattern(pattern)
{
    for (std::int32_t i = 0; i != pattern.countParts() && !is_too_much(); ++i)
        add_part(i);
    for (auto& entry : m_names)
        rename(entry.second);
}

bool argument_names_t::is_too_much() const
{
    return m_names.size() > max_names || m_typed_places > max_typed_places ||
           m_nested_texts > max_nested_texts;
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
        add_use(m_names[name_at(index)], part.getArgType());
    else if (part.getType() == UMSGPAT_PART_TYPE_ARG_TYPE)
        add_type(m_pattern.getSubstring(part));
    else if (part.getType() == UMSGPAT_PART_TYPE_MSG_START)
        m_nested_texts = std::max(m_nested_texts, part.getValue());
}

void argument_names_t::add_type(const icu::UnicodeString& type)
{
    ++m_typed_places;
    if (type != u"number" && type != u"date" && type != u"time")
        m_need_rules = true;
}

void argument_names_t::rename(argument_uses_t& uses)
{
    if (uses.is_number && uses.is_text)
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

/// A branch of its own, of the new name, stands for an argument that is not there.
std::int32_t argument_names_t::copy_select(std::int32_t start, std::int32_t copied,
                                           const icu::UnicodeString& new_name,
                                           icu::UnicodeString& result) const
{
    const std::int32_t name_end = copy_text(start, copied, new_name, result);
    const std::int32_t selector = m_pattern.getPart(start + 2).getIndex();
    result.append(m_pattern.getPatternString(), name_end, selector - name_end);
    result.append(new_name).append(u"{'{'").append(name_at(start)).append(u"'}'} ");
    return selector;
}

} // namespace i18n
} // namespace ROVA_2_18

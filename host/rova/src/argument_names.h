#pragma once

#include "placeholder_names.h"

#include <unicode/messagepattern.h>
#include <unicode/unistr.h>

#include <cstddef>
#include <cstdint>
#include <map>

namespace ROVA_2_18
{
namespace i18n
{

/// Uses of one argument in a pattern.
struct argument_uses_t
{
    std::size_t text_uses = 0; ///< number of uses as a text
    bool is_selector = false;
    bool is_number = false;
    bool is_date = false; ///< if it is a number, whether it is only used as a date or time
    icu::UnicodeString original_name; ///< in the pattern
    icu::UnicodeString text_name;     ///< empty if the text keeps its name
    icu::UnicodeString selector_name; ///< empty if the selector keeps its name
};

/// The names of a pattern's arguments. ICU takes one value per name. If a name is used both as a
/// number and as a text, the text gets another name.
class argument_names_t
{
public:
    typedef std::map<icu::UnicodeString, argument_uses_t> names_t;

    /// Takes a pattern, and the original names of the arguments that were renamed in it. Both must
    /// outlive this object.
    argument_names_t(const icu::MessagePattern& pattern, const renamed_pattern_t& renamed);

    const names_t& all() const { return m_names; }
    /// Returns whether the pattern exceeds a limit. Its names are incomplete in that case.
    bool exceeds_limits() const;
    /// Returns whether the pattern may need a language's rule-based number formats.
    bool need_rules() const { return m_need_rules; }
    /// Returns how many numbers and date fields a result has at most. Counts each character of a
    /// style, since a date's style may write a field for each.
    std::size_t number_uses() const { return m_number_uses; }

    /// Returns the pattern with the new names.
    icu::UnicodeString renamed_pattern() const;

private:
    icu::UnicodeString name_at(std::int32_t start) const;
    void add_part(std::int32_t index);
    void add_argument(std::int32_t start);
    bool is_date(std::int32_t start) const;
    void add_type(const icu::UnicodeString& type);
    void add_style(const icu::UnicodeString& style);
    void rename(argument_uses_t& uses);
    icu::UnicodeString new_name();
    std::int32_t copy_argument(std::int32_t start, std::int32_t copied,
                               icu::UnicodeString& result) const;
    std::int32_t copy_text(std::int32_t start, std::int32_t copied,
                           const icu::UnicodeString& new_name, icu::UnicodeString& result) const;
    std::int32_t copy_select(std::int32_t start, std::int32_t copied,
                             const icu::UnicodeString& new_name, icu::UnicodeString& result) const;

    const icu::MessagePattern& m_pattern;
    const renamed_pattern_t& m_renamed;
    names_t m_names;
    std::size_t m_text_uses = 0;
    std::size_t m_number_uses = 0;
    std::size_t m_typed_uses = 0;
    std::int32_t m_nested_texts = 0;
    bool m_need_rules = false;
    bool m_has_large_power = false;
    std::size_t m_next_number = 0;
};

} // namespace i18n
} // namespace ROVA_2_18

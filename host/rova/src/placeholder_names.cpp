#include "placeholder_names.h"

#include <unicode/locid.h>
#include <unicode/messagepattern.h>
#include <unicode/uchar.h>

#include <cstdint>
#include <string>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

// The characters for private use that can begin the new names.
constexpr char16_t min_prefix = u'\xE001';
constexpr char16_t max_prefix = u'\xE010';

bool is_blank(char16_t unit)
{
    return u_hasBinaryProperty(unit, UCHAR_PATTERN_WHITE_SPACE) != 0;
}

/// Returns whether ICU refuses the name. A name with an apostrophe stays as it is, because it is
/// more likely a mistake in quoting.
bool can_be_renamed(const icu::UnicodeString& name)
{
    return !name.isEmpty() && name.indexOf(u'\'') < 0 &&
           icu::MessagePattern::validateArgumentName(name) == UMSGPAT_ARG_NAME_NOT_VALID;
}

/// Copies a pattern with other names, by ICU's rules for apostrophes and braces.
class renamer_t
{
public:
    explicit renamer_t(const icu::UnicodeString& pattern) : m_pattern(pattern)
    {
        while (m_prefix <= max_prefix && pattern.indexOf(m_prefix) >= 0)
            ++m_prefix;
    }

    renamed_pattern_t rename()
    {
        while (!at_end())
            copy_message(kind_t::message);
        m_result.pattern.append(m_pattern, m_copied, INT32_MAX);
        return std::move(m_result);
    }

private:
    /// Determines what an apostrophe can quote besides braces.
    enum class kind_t
    {
        message,
        plural, ///< a '#'
        choice, ///< a '|'
        style   ///< everything
    };

    bool at_end() const { return m_at >= m_pattern.length(); }

    /// Passes over a text and the brace that ends it.
    void copy_message(kind_t kind)
    {
        while (!at_end()) {
            const char16_t unit = m_pattern[m_at++];
            if (unit == u'\'')
                skip_quoted(kind);
            else if (unit == u'{' && kind == kind_t::style)
                copy_message(kind);
            else if (unit == u'{')
                copy_argument();
            else if (unit == u'}')
                return;
        }
    }

    void skip_quoted(kind_t kind)
    {
        const char16_t next = m_pattern.charAt(m_at);
        const bool is_quote = next == u'{' || next == u'}' || kind == kind_t::style ||
                              (next == u'#' && kind == kind_t::plural) ||
                              (next == u'|' && kind == kind_t::choice);
        if (next == u'\'')
            ++m_at;
        else if (is_quote)
            skip_to_closing_apostrophe();
    }

    void skip_to_closing_apostrophe()
    {
        while (!at_end())
            if (m_pattern[m_at++] == u'\'' && m_pattern.charAt(m_at++) != u'\'')
                return void(--m_at);
    }

    void copy_argument()
    {
        const icu::UnicodeString name = read_word();
        const std::int32_t begin = m_at - name.length();
        if (m_prefix <= max_prefix && can_be_renamed(name)) {
            m_result.pattern.append(m_pattern, m_copied, begin - m_copied).append(new_name(name));
            m_copied = m_at;
        }
        skip_blanks();
        if (!skip(u','))
            return void(skip(u'}'));
        const icu::UnicodeString type = read_word().toLower(icu::Locale::getRoot());
        skip_blanks();
        if (!skip(u','))
            return void(skip(u'}'));
        if (type == u"plural" || type == u"selectordinal")
            copy_branches(kind_t::plural);
        else if (type == u"select")
            copy_branches(kind_t::message);
        else
            copy_message(type == u"choice" ? kind_t::choice : kind_t::style);
    }

    void copy_branches(kind_t kind)
    {
        while (!at_end()) {
            const char16_t unit = m_pattern[m_at++];
            if (unit == u'{')
                copy_message(kind);
            else if (unit == u'}')
                return;
        }
    }

    /// Passes over blanks and the text up to the next comma or brace, and returns that text without
    /// the blanks around it.
    icu::UnicodeString read_word()
    {
        skip_blanks();
        const std::int32_t begin = m_at;
        std::int32_t end = begin;
        while (!at_end() && m_pattern[m_at] != u',' && m_pattern[m_at] != u'{' &&
               m_pattern[m_at] != u'}')
            if (!is_blank(m_pattern[m_at++]))
                end = m_at;
        m_at = end;
        return m_pattern.tempSubStringBetween(begin, end);
    }

    void skip_blanks()
    {
        while (!at_end() && is_blank(m_pattern[m_at]))
            ++m_at;
    }

    bool skip(char16_t unit)
    {
        const bool is_there = m_pattern.charAt(m_at) == unit && !at_end();
        m_at += is_there ? 1 : 0;
        return is_there;
    }

    /// Returns the same new name for the same name.
    icu::UnicodeString new_name(const icu::UnicodeString& name)
    {
        auto& known = m_new_names[name];
        if (known.isEmpty())
            known = icu::UnicodeString(m_prefix).append(
                icu::UnicodeString::fromUTF8(std::to_string(m_new_names.size())));
        m_result.names[known] = name;
        return known;
    }

    const icu::UnicodeString& m_pattern;
    char16_t m_prefix = min_prefix; ///< of the new names; not in the pattern
    std::int32_t m_at = 0;
    std::int32_t m_copied = 0; ///< up to here the pattern is in the result
    std::map<icu::UnicodeString, icu::UnicodeString> m_new_names;
    renamed_pattern_t m_result;
};

} // namespace

renamed_pattern_t rename_placeholders(const icu::UnicodeString& pattern)
{
    return renamer_t(pattern).rename();
}

} // namespace i18n
} // namespace ROVA_2_18

#include "pattern.h"

#include "output_text.h"
#include "quoted_placeholders.h"

#include <argument_names.h>
#include <placeholder_names.h>

#include <unicode/messagepattern.h>
#include <unicode/parseerr.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace velmolint
{
namespace
{

// The limits of rova/i18n.h. ICU parses nested arguments recursively.
constexpr std::int32_t max_pattern = std::int32_t{1} << 20;
constexpr std::size_t max_depth = 100;

constexpr std::int32_t max_excerpt = 20;

std::string to_utf8(const icu::UnicodeString& text)
{
    std::string result;
    return text.toUTF8String(result);
}

/// Returns whether the braces may be nested too deeply. Ignores closing braces after the first
/// apostrophe, since they may be quoted.
bool is_too_deep(const icu::UnicodeString& text)
{
    const std::int32_t apostrophe = text.indexOf(u'\'');
    std::size_t depth = 0;
    for (std::int32_t i = 0; i != text.length() && depth <= max_depth; ++i) {
        if (text[i] == u'{')
            ++depth;
        else if (text[i] == u'}' && depth != 0 && (apostrophe < 0 || i < apostrophe))
            --depth;
    }
    return depth > max_depth;
}

void set_fault(pattern_t& pattern, const std::string& check, const std::string& message)
{
    pattern.fault_check = check;
    pattern.fault = message;
}

/// Parses a pattern as the library does: placeholders with names that ICU refuses get other names
/// if the pattern is invalid otherwise.
class parser_t
{
public:
    explicit parser_t(const icu::UnicodeString& text) : m_text(text)
    {
        parse(text);
        if (is_valid())
            return;
        m_renamed = ROVA_2_18::i18n::rename_placeholders(text);
        if (!m_renamed.names.empty()) {
            m_text = m_renamed.pattern;
            parse(m_renamed.pattern);
        }
    }

    bool is_valid() const { return U_SUCCESS(m_status); }
    bool exceeds_limits() const
    {
        return ROVA_2_18::i18n::argument_names_t(m_parsed, m_renamed).exceeds_limits();
    }
    const icu::MessagePattern& parsed() const { return m_parsed; }
    /// Returns the text as it is in the catalog.
    icu::UnicodeString original(const icu::UnicodeString& text) const;
    void describe_fault(pattern_t& pattern) const;

private:
    void parse(const icu::UnicodeString& text)
    {
        m_status = U_ZERO_ERROR;
        m_parsed.parse(text, &m_error, m_status);
    }

    UErrorCode m_status = U_ZERO_ERROR;
    UParseError m_error = {};
    icu::MessagePattern m_parsed{m_status};
    ROVA_2_18::i18n::renamed_pattern_t m_renamed;
    icu::UnicodeString m_text; ///< as it was parsed
};

// A new name is a character for private use and a number.
icu::UnicodeString parser_t::original(const icu::UnicodeString& text) const
{
    if (m_renamed.names.empty())
        return text;
    icu::UnicodeString result;
    std::int32_t next = 0;
    while (next != text.length()) {
        std::int32_t end = next + 1;
        while (end != text.length() && text[end] >= u'0' && text[end] <= u'9')
            ++end;
        const auto name = m_renamed.names.find(text.tempSubStringBetween(next, end));
        if (name != m_renamed.names.end())
            result.append(name->second);
        else
            result.append(text, next, end - next);
        next = end;
    }
    return result;
}

void parser_t::describe_fault(pattern_t& pattern) const
{
    if (m_status == U_DEFAULT_KEYWORD_MISSING)
        return set_fault(pattern, "pattern-other",
                         "A plural or select has no branch \"other\". Add other {...}.");
    if (m_status == U_UNMATCHED_BRACES)
        return set_fault(pattern, "pattern-syntax",
                         "A \"{\" has no matching \"}\", so the pattern is shown as it is. Add the "
                         "brace, or write '{' for a brace.");
    const std::int32_t offset = std::clamp(m_error.offset, 0, m_text.length());
    const std::int32_t end = m_text.getChar32Limit(std::min(offset + max_excerpt, m_text.length()));
    const icu::UnicodeString before = original(m_text.tempSubString(0, offset));
    set_fault(pattern, "pattern-syntax",
              "The pattern is invalid at character " + std::to_string(before.countChar32() + 1) +
                  ", before " +
                  in_quotes(to_utf8(original(m_text.tempSubStringBetween(offset, end)))) +
                  ", so it is shown as it is. Correct it there.");
}

class pattern_reader_t
{
public:
    pattern_reader_t(const parser_t& parser, pattern_t& pattern)
        : m_parser(parser), m_parsed(parser.parsed()), m_pattern(pattern)
    {}

    void read();

private:
    std::string substring(std::int32_t index) const
    {
        return to_utf8(m_parser.original(m_parsed.getSubstring(m_parsed.getPart(index))));
    }
    void read_argument(std::int32_t start);
    void read_typed(std::int32_t start);
    void read_plural(std::int32_t start, bool is_ordinal);

    const parser_t& m_parser;
    const icu::MessagePattern& m_parsed;
    pattern_t& m_pattern;
};

void pattern_reader_t::read()
{
    for (std::int32_t i = 0; i != m_parsed.countParts(); ++i)
        if (m_parsed.getPartType(i) == UMSGPAT_PART_TYPE_ARG_START)
            read_argument(i);
}

void pattern_reader_t::read_argument(std::int32_t start)
{
    m_pattern.arguments.insert(substring(start + 1));
    const UMessagePatternArgType type = m_parsed.getPart(start).getArgType();
    if (type == UMSGPAT_ARG_TYPE_SIMPLE)
        read_typed(start);
    else if (type == UMSGPAT_ARG_TYPE_PLURAL || type == UMSGPAT_ARG_TYPE_SELECTORDINAL)
        read_plural(start, type == UMSGPAT_ARG_TYPE_SELECTORDINAL);
}

// The parts are ARG_START, ARG_NAME, ARG_TYPE, and ARG_STYLE if there is a style.
void pattern_reader_t::read_typed(std::int32_t start)
{
    const std::int32_t style = start + 3;
    const bool has_style = m_parsed.getPartType(style) == UMSGPAT_PART_TYPE_ARG_STYLE;
    m_pattern.typed_arguments.push_back(
        {substring(start + 1), substring(start + 2), has_style ? substring(style) : std::string()});
}

// Each branch is ARG_SELECTOR, the number of a selector such as =1, and a nested text.
void pattern_reader_t::read_plural(std::int32_t start, bool is_ordinal)
{
    plural_t plural;
    plural.argument = substring(start + 1);
    plural.is_ordinal = is_ordinal;
    const std::int32_t end = m_parsed.getLimitPartIndex(start);
    for (std::int32_t i = start + 2; i < end; ++i) {
        const icu::MessagePattern::Part& part = m_parsed.getPart(i);
        if (part.getType() == UMSGPAT_PART_TYPE_MSG_START)
            i = m_parsed.getLimitPartIndex(i);
        else if (part.getType() != UMSGPAT_PART_TYPE_ARG_SELECTOR)
            continue;
        else if (icu::MessagePattern::Part::hasNumericValue(m_parsed.getPartType(i + 1)))
            plural.numbers.insert(m_parsed.getNumericValue(m_parsed.getPart(i + 1)));
        else
            plural.categories.insert(substring(i));
    }
    m_pattern.plurals.push_back(std::move(plural));
}

} // namespace

pattern_t parse_pattern(const std::string& text)
{
    pattern_t pattern;
    const icu::UnicodeString characters = icu::UnicodeString::fromUTF8(text);
    if (characters.length() > max_pattern || is_too_deep(characters)) {
        set_fault(pattern, "pattern-limit",
                  "The pattern has more than 1,048,576 characters or 100 nested braces, so it is "
                  "shown as it is. Shorten it.");
        return pattern;
    }
    const parser_t parser(characters);
    if (!parser.is_valid()) {
        parser.describe_fault(pattern);
        return pattern;
    }
    if (parser.exceeds_limits()) {
        set_fault(pattern, "pattern-limit",
                  "The pattern exceeds a limit on its arguments, nested texts or numbers, so it is "
                  "shown as it is. Shorten it.");
        return pattern;
    }
    pattern.quoted_placeholders = find_quoted_placeholders(parser.parsed());
    pattern_reader_t(parser, pattern).read();
    return pattern;
}

} // namespace velmolint

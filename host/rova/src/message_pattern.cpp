#include "message_pattern.h"

#include "argument_names.h"
#include "locale_name.h"
#include "placeholder_names.h"
#include "time_zone.h"
#include "unicode_text.h"

#include <rova/strings.h>

#include <unicode/messagepattern.h>
#include <unicode/udata.h>
#include <unicode/ures.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <new>
#include <utility>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

// ICU parses nested arguments recursively.
constexpr std::size_t max_depth = 100;

// ICU allocates up to about 30 bytes per character, and keeps most of them.
constexpr std::size_t max_pattern = std::size_t{1} << 20;

// A short pattern can repeat a long text many times.
constexpr std::size_t max_result = std::size_t{1} << 24;

// A double has up to 309 digits. A style may add 99 digits before the decimal point and 99 after
// it, and there are separators between the digits.
constexpr std::size_t max_number = 1000;

// Braces, a prefix and a number.
constexpr std::int32_t max_new_name = 16;

bool succeeded(UErrorCode status)
{
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    return U_SUCCESS(status);
}

/// Returns whether the braces may be nested too deeply. Ignores closing braces after the first
/// apostrophe, since they may be quoted.
bool is_too_deep(const std::wstring& pattern)
{
    const std::size_t quote = pattern.find(L'\'');
    std::size_t depth = 0;
    for (std::size_t i = 0; i != pattern.size() && depth <= max_depth; ++i) {
        if (pattern[i] == L'{')
            ++depth;
        else if (pattern[i] == L'}' && depth != 0 && i < quote)
            --depth;
    }
    return depth > max_depth;
}

bool has_data(const char* package, const icu::Locale& locale)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUResourceBundlePointer bundle(ures_open(package, locale.getName(), &status));
    return succeeded(status) && status != U_USING_DEFAULT_WARNING;
}

/// Returns the first of these locales of which ICU has data: the named one, the one that has
/// replaced it, the same without a script. Returns the root locale if there is none. Otherwise ICU
/// would use the data of the process's default locale.
icu::Locale find_language(const std::string& name, bool with_rules)
{
    const icu::Locale named = to_icu_locale(name);
    const icu::Locale candidates[] = {named, icu::Locale::createCanonical(named.getName()),
                                      icu::Locale(named.getLanguage(), named.getCountry())};
    for (const icu::Locale& locale : candidates)
        if (!locale.isBogus() && has_data(nullptr, locale) &&
            (!with_rules || has_data(U_ICUDATA_NAME "-rbnf", locale)))
            return locale;
    return icu::Locale::getRoot();
}

/// Returns the locale with the time zone. Otherwise ICU would format all dates, nested ones too, in
/// the process's time zone.
icu::Locale find_locale(const std::string& name, bool with_rules, const std::string& time_zone)
{
    icu::Locale locale = find_language(name, with_rules);
    UErrorCode status = U_ZERO_ERROR;
    locale.setKeywordValue("timezone", time_zone.c_str(), status);
    return succeeded(status) ? locale : icu::Locale(("@timezone=" + time_zone).c_str());
}

bool fits(const std::wstring* text)
{
    return text == nullptr || strings::fits_unicode(*text);
}

icu::UnicodeString make_placeholder(const icu::UnicodeString& name)
{
    return icu::UnicodeString(u'{').append(name).append(u'}');
}

/// Replaces each new name in braces by the original one.
icu::UnicodeString restore_names(const icu::UnicodeString& text,
                                 const std::map<icu::UnicodeString, icu::UnicodeString>& names)
{
    icu::UnicodeString result;
    std::int32_t copied = 0;
    for (std::int32_t at = text.indexOf(u'{'); at >= 0; at = text.indexOf(u'{', at + 1)) {
        const std::int32_t end = text.indexOf(u'}', at, max_new_name);
        if (end < 0)
            continue;
        const auto found = names.find(text.tempSubStringBetween(at + 1, end));
        if (found == names.end())
            continue;
        result.append(text, copied, at + 1 - copied).append(found->second);
        copied = end;
    }
    return result.append(text, copied, INT32_MAX);
}

/// Throws std::bad_alloc if the text is bogus: ICU marks it so on allocation failure and continues.
const icu::UnicodeString& checked(const icu::UnicodeString& text)
{
    if (text.isBogus())
        throw std::bad_alloc();
    return text;
}

/// Appends the text as it is after a conversion to ICU's text and back.
void append_units(std::wstring& result, const std::wstring& text)
{
    const bool has_same_units = std::all_of(text.begin(), text.end(), [](wchar_t unit) {
        return static_cast<std::uint32_t>(unit) <= 0xFFFF;
    });
    result += has_same_units ? text : strings::from_unicode(strings::to_unicode(text));
}

std::string to_utf8(const icu::UnicodeString& text)
{
    return strings::utf16_to_utf8(strings::from_unicode(text));
}

} // namespace

pattern_t::pattern_t(const std::wstring& pattern, const std::string& locale)
    : m_text(pattern), m_time_zone(get_time_zone())
{
    if (pattern.size() > max_pattern || is_too_deep(pattern))
        return;
    const icu::UnicodeString text = strings::to_unicode(pattern);
    UErrorCode status = U_ZERO_ERROR;
    icu::MessagePattern parsed(text, nullptr, status);
    renamed_pattern_t renamed;
    if (!succeeded(status)) {
        renamed = rename_placeholders(text);
        status = U_ZERO_ERROR;
        parsed.parse(checked(renamed.pattern), nullptr, status);
    }
    if (!succeeded(status))
        return;
    const argument_names_t names(parsed, renamed);
    if (names.exceeds_limits())
        return;
    m_length = pattern.size() + names.number_uses() * max_number;
    add_slots(names);
    if (names.number_uses() == 0)
        split(parsed, names);
    else
        make_format(names.renamed_pattern(), find_locale(locale, names.need_rules(), m_time_zone));
    m_original_names = std::move(renamed.names);
}

pattern_t::~pattern_t() = default;

std::wstring pattern_t::format(const generic::varg_list& arguments) const
{
    const texts_t texts = find_texts(arguments);
    if (!fit(texts))
        return m_text;
    if (!m_format)
        return m_segments.empty() ? m_text : join(texts);
    icu_arguments_t given(m_names, m_time_zone);
    for (const slot_t& slot : m_slots)
        given.add(slot, texts[slot.argument]);
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString result = format(given, status);
    if (!succeeded(status))
        return m_text;
    if (!given.is_complete() && !m_original_names.empty())
        result = restore_names(result, m_original_names);
    return strings::from_unicode(result);
}

icu::UnicodeString pattern_t::format(const icu_arguments_t& given, UErrorCode& status) const
{
    icu::UnicodeString result;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_format->format(given.names(), given.values(), given.size(), result, status);
    return result;
}

void pattern_t::add_slots(const argument_names_t& names)
{
    for (const auto& entry : names.all())
        m_arguments.push_back(to_utf8(entry.second.original_name));
    // Names that are not valid Unicode may be equal in UTF-8.
    std::sort(m_arguments.begin(), m_arguments.end());
    m_arguments.erase(std::unique(m_arguments.begin(), m_arguments.end()), m_arguments.end());
    for (const auto& entry : names.all())
        add_slots(entry.first, entry.second);
}

void pattern_t::add_slots(const icu::UnicodeString& name, const argument_uses_t& uses)
{
    const std::size_t argument = find_argument(to_utf8(uses.original_name), 0);
    const icu::UnicodeString placeholder = make_placeholder(uses.original_name);
    const std::size_t text_uses = uses.is_number ? 0 : uses.text_uses;
    const bool is_renamed_text = !uses.is_number && !(uses.original_name == name);
    add_slot(name, {argument, uses.is_number, uses.is_date, text_uses,
                    is_renamed_text ? placeholder : icu::UnicodeString()});
    if (!uses.text_name.isEmpty())
        add_slot(uses.text_name, {argument, false, false, uses.text_uses, placeholder});
    if (!uses.selector_name.isEmpty())
        add_slot(uses.selector_name, {argument, false, false, 0, uses.selector_name});
}

void pattern_t::add_slot(const icu::UnicodeString& name, const slot_t& slot)
{
    m_names.push_back(name);
    checked(m_names.back());
    m_slots.push_back(slot);
    checked(m_slots.back().fallback);
}

void pattern_t::make_format(const icu::UnicodeString& pattern, const icu::Locale& locale)
{
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::MessageFormat>(checked(pattern), locale, status);
    if (!format)
        throw std::bad_alloc();
    if (!succeeded(status))
        return;
    m_format = std::move(format);
}

/// Splits a pattern that has only texts as arguments. ICU would give the same result, but copies
/// each text several times.
void pattern_t::split(const icu::MessagePattern& parsed, const argument_names_t& names)
{
    icu::UnicodeString literal;
    std::int32_t copied = 0;
    for (std::int32_t i = 0; i != parsed.countParts(); ++i) {
        const auto& part = parsed.getPart(i);
        literal.append(parsed.getPatternString(), copied, part.getIndex() - copied);
        copied = part.getLimit();
        if (part.getType() != UMSGPAT_PART_TYPE_ARG_START)
            continue;
        const auto& name =
            names.all().find(parsed.getSubstring(parsed.getPart(i + 1)))->second.original_name;
        m_segments.push_back({strings::from_unicode(literal), find_argument(to_utf8(name), 0),
                              strings::from_unicode(make_placeholder(name))});
        literal.remove();
        i = parsed.getLimitPartIndex(i);
        copied = parsed.getPart(i).getLimit();
    }
    m_segments.push_back({strings::from_unicode(literal), m_arguments.size(), std::wstring()});
}

/// Returns the name's index, or the number of names if there is none. Compares with the expected
/// name first, since arguments are most often given in the order of their names.
std::size_t pattern_t::find_argument(const std::string& name, std::size_t expected) const
{
    if (expected < m_arguments.size() && m_arguments[expected] == name)
        return expected;
    const auto found = std::lower_bound(m_arguments.begin(), m_arguments.end(), name);
    const bool is_known = found != m_arguments.end() && *found == name;
    return static_cast<std::size_t>((is_known ? found : m_arguments.end()) - m_arguments.begin());
}

pattern_t::texts_t pattern_t::find_texts(const generic::varg_list& arguments) const
{
    texts_t texts(m_arguments.size(), nullptr);
    std::size_t expected = 0;
    for (const auto& given : arguments) {
        const std::size_t argument = find_argument(given.name(), expected);
        if (argument == texts.size())
            continue;
        if (texts[argument] == nullptr)
            texts[argument] = &given.value().m_text;
        expected = argument + 1;
    }
    return texts;
}

/// Returns whether each text fits ICU's lengths and the result is within the limit.
bool pattern_t::fit(const texts_t& texts) const
{
    std::size_t length = m_length;
    for (const slot_t& slot : m_slots) {
        const std::wstring* const text = texts[slot.argument];
        if (!fits(text))
            return false;
        length += text != nullptr ? slot.text_uses * text->size() : 0;
    }
    return length <= max_result;
}

std::wstring pattern_t::join(const texts_t& texts) const
{
    std::size_t size = m_text.size();
    for (const std::wstring* text : texts)
        size += text != nullptr ? text->size() : 0;
    std::wstring result;
    result.reserve(size);
    for (const segment_t& segment : m_segments) {
        result += segment.literal;
        if (segment.argument == m_arguments.size())
            continue;
        const std::wstring* const text = texts[segment.argument];
        if (text == nullptr)
            result += segment.fallback_text;
        else
            append_units(result, *text);
    }
    return result;
}

} // namespace i18n
} // namespace ROVA_2_18

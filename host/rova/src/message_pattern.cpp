#include "message_pattern.h"

#include "argument_names.h"
#include "unicode_text.h"

#include <rova/strings.h>

#include <unicode/messagepattern.h>
#include <unicode/udata.h>
#include <unicode/ures.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <new>
#include <utility>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

// ICU reads what is nested by recursion.
constexpr std::size_t max_depth = 100;

// Beyond them not every whole number is a double.
constexpr std::int64_t max_exact = std::int64_t{1} << 53;

bool succeeded(UErrorCode status)
{
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    return U_SUCCESS(status);
}

/// What follows an apostrophe may be quoted, so from there on nothing counts as closing.
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

/// Where ICU has no data of a language it takes those of the process's one, unless it is asked for
/// the root.
icu::Locale find_locale(const std::string& name, bool with_rules)
{
    icu::Locale locale(name.c_str());
    if (locale.isBogus() || !has_data(nullptr, locale))
        return icu::Locale::getRoot();
    if (with_rules && !has_data(U_ICUDATA_NAME "-rbnf", locale))
        return icu::Locale::getRoot();
    return locale;
}

template <typename Number>
bool is_whole_text(const std::string& text, Number& number)
{
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end;
}

/// A double where that is exact: ICU takes no other number for a date.
icu::Formattable to_formattable(std::int64_t number)
{
    if (number >= -max_exact && number <= max_exact)
        return icu::Formattable(static_cast<double>(number));
    return icu::Formattable(number);
}

/// What ICU is given: a name and a value for each argument that has one.
class given_t
{
public:
    explicit given_t(std::size_t most)
    {
        m_names.reserve(most);
        m_values.reserve(most);
    }

    const std::vector<icu::UnicodeString>& names() const { return m_names; }
    const std::vector<icu::Formattable>& values() const { return m_values; }

    void add(const pattern_t::slot_t& slot, const std::wstring* text)
    {
        if (text != nullptr && slot.is_number)
            add_number(strings::utf16_to_utf8(*text));
        else if (text != nullptr)
            m_values.emplace_back(strings::to_unicode(*text));
        else if (!slot.stand_in.isEmpty())
            m_values.emplace_back(slot.stand_in);
        if (m_values.size() != m_names.size())
            m_names.push_back(slot.name);
    }

private:
    void add_number(const std::string& text)
    {
        std::int64_t whole = 0;
        double real = 0;
        if (is_whole_text(text, whole))
            m_values.push_back(to_formattable(whole));
        else if (is_whole_text(text, real) && std::isfinite(real))
            m_values.emplace_back(real);
    }

    std::vector<icu::UnicodeString> m_names;
    std::vector<icu::Formattable> m_values;
};

bool fits(const std::wstring* text)
{
    return text == nullptr || strings::fits_unicode(*text);
}

icu::UnicodeString in_braces(const icu::UnicodeString& name)
{
    return icu::UnicodeString(u'{').append(name).append(u'}');
}

/// ICU marks a text for which it found no memory, and goes on.
const icu::UnicodeString& checked(const icu::UnicodeString& text)
{
    if (text.isBogus())
        throw std::bad_alloc();
    return text;
}

std::string to_utf8(const icu::UnicodeString& text)
{
    return strings::utf16_to_utf8(strings::from_unicode(text));
}

} // namespace

pattern_t::pattern_t(const std::wstring& pattern, const std::string& locale) : m_text(pattern)
{
    if (!strings::fits_unicode(pattern) || is_too_deep(pattern))
        return;
    UErrorCode status = U_ZERO_ERROR;
    const icu::MessagePattern parsed(strings::to_unicode(pattern), nullptr, status);
    if (!succeeded(status))
        return;
    const argument_names_t names(parsed);
    if (names.is_too_much())
        return;
    add_slots(names);
    make_format(names.renamed_pattern(), find_locale(locale, names.need_rules()));
}

pattern_t::~pattern_t() = default;

std::wstring pattern_t::format(const generic::varg_list& arguments) const
{
    const texts_t texts = find_texts(arguments);
    if (!m_format || !std::all_of(texts.begin(), texts.end(), fits))
        return m_text;
    given_t given(m_slots.size());
    for (const slot_t& slot : m_slots)
        given.add(slot, texts[slot.argument]);
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString result = format(given.names(), given.values(), status);
    return succeeded(status) ? strings::from_unicode(result) : m_text;
}

icu::UnicodeString pattern_t::format(const std::vector<icu::UnicodeString>& names,
                                     const std::vector<icu::Formattable>& values,
                                     UErrorCode& status) const
{
    icu::UnicodeString result;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_format->format(names.data(), values.data(), static_cast<std::int32_t>(names.size()), result,
                     status);
    return result;
}

void pattern_t::add_slots(const argument_names_t& names)
{
    for (const auto& entry : names.all())
        m_arguments.push_back(to_utf8(entry.first));
    // Names that are no Unicode text may be the same in UTF-8.
    std::sort(m_arguments.begin(), m_arguments.end());
    m_arguments.erase(std::unique(m_arguments.begin(), m_arguments.end()), m_arguments.end());
    for (const auto& entry : names.all())
        add_slots(entry.first, entry.second);
}

void pattern_t::add_slots(const icu::UnicodeString& name, const argument_uses_t& uses)
{
    const std::size_t argument = find_argument(to_utf8(name));
    add_slot({name, argument, uses.is_number, icu::UnicodeString()});
    if (!uses.text_name.isEmpty())
        add_slot({uses.text_name, argument, false, in_braces(name)});
    if (!uses.selector_name.isEmpty())
        add_slot({uses.selector_name, argument, false, uses.selector_name});
}

void pattern_t::add_slot(const slot_t& slot)
{
    m_slots.push_back(slot);
    checked(m_slots.back().name);
    checked(m_slots.back().stand_in);
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
    if (m_slots.empty()) {
        m_text = this->format(generic::varg_list());
        m_format.reset();
    }
}

/// The name's place, or how many there are.
std::size_t pattern_t::find_argument(const std::string& name) const
{
    const auto place = std::lower_bound(m_arguments.begin(), m_arguments.end(), name);
    const bool is_there = place != m_arguments.end() && *place == name;
    return static_cast<std::size_t>((is_there ? place : m_arguments.end()) - m_arguments.begin());
}

pattern_t::texts_t pattern_t::find_texts(const generic::varg_list& arguments) const
{
    texts_t texts(m_arguments.size(), nullptr);
    for (const auto& given : arguments) {
        const std::size_t argument = find_argument(given.name());
        if (argument != texts.size() && texts[argument] == nullptr)
            texts[argument] = &given.value().m_text;
    }
    return texts;
}

} // namespace i18n
} // namespace ROVA_2_18

#include "icu_arguments.h"

#include "iso_date.h"
#include "unicode_text.h"

#include <rova/strings.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <new>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

// Above this value, or below its negative, not every integer is exact as a double.
constexpr std::int64_t max_exact = std::int64_t{1} << 53;

// A double preserves this many digits of any decimal number.
constexpr std::size_t max_double_digits = 15;
// ICU processes an exact number digit by digit, several times.
constexpr std::size_t max_decimal = 100;

template <typename Number>
bool is_whole_text(const std::string& text, Number& number)
{
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end;
}

/// Returns a double if it is exact: ICU accepts no other number for a date.
icu::Formattable to_formattable(std::int64_t number)
{
    if (number >= -max_exact && number <= max_exact)
        return icu::Formattable(static_cast<double>(number));
    return icu::Formattable(number);
}

/// Returns whether the text has more digits than a double preserves. Excludes numbers with an
/// exponent, which may need more digits than fit in memory.
bool is_long_decimal(const std::string& text)
{
    return text.size() > max_double_digits && text.size() <= max_decimal &&
           text.find_first_of("eE") == std::string::npos;
}

/// Returns the number with all its digits; ICU rounds it if it needs a double. Returns an integral
/// number as to_formattable() does. Requires a number, so each failure is an allocation failure.
icu::Formattable to_decimal(const std::string& text)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::Formattable decimal(icu::StringPiece(text), status);
    if (U_FAILURE(status))
        throw std::bad_alloc();
    if (decimal.getType() == icu::Formattable::kDouble)
        return decimal;
    return to_formattable(decimal.getInt64());
}

} // namespace

icu_arguments_t::icu_arguments_t(const std::vector<icu::UnicodeString>& names,
                                 const std::string& time_zone)
    : m_all_names(names), m_time_zone(time_zone)
{
    m_values.reserve(names.size());
}

void icu_arguments_t::add(const slot_t& slot, const std::wstring* text)
{
    const std::size_t before = m_values.size();
    add_value(slot, text);
    const bool is_given = m_values.size() != before;
    if (m_is_complete && !is_given) {
        m_is_complete = false;
        m_names.assign(m_all_names.begin(), m_all_names.begin() + size());
    } else if (!m_is_complete && is_given) {
        m_names.push_back(m_all_names[m_next_name]);
    }
    ++m_next_name;
}

void icu_arguments_t::add_value(const slot_t& slot, const std::wstring* text)
{
    if (text != nullptr && slot.is_number)
        add_number(slot, strings::utf16_to_utf8(*text));
    else if (text != nullptr)
        m_values.emplace_back(strings::to_unicode(*text));
    else if (!slot.fallback.isEmpty())
        m_values.emplace_back(slot.fallback);
}

void icu_arguments_t::add_number(const slot_t& slot, const std::string& text)
{
    std::int64_t whole = 0;
    double real = 0;
    if (is_whole_text(text, whole))
        m_values.push_back(to_formattable(whole));
    else if (is_whole_text(text, real) && std::isfinite(real))
        m_values.push_back(is_long_decimal(text) ? to_decimal(text) : icu::Formattable(real));
    else if (const auto date = slot.is_date
                                   ? parse_iso_date(icu::UnicodeString::fromUTF8(text), m_time_zone)
                                   : std::nullopt)
        m_values.emplace_back(*date, icu::Formattable::kIsDate);
}

} // namespace i18n
} // namespace ROVA_2_18

#include "iso_date.h"

#include <unicode/gregocal.h>
#include <unicode/timezone.h>

#include <cstdint>
#include <memory>
#include <new>
#include <regex>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

// The library's regular expressions are recursive.
constexpr std::size_t max_date = 40;

// Returns the time zone of the offset, or that of the id if there is no offset.
std::unique_ptr<icu::TimeZone> make_zone(const std::string& offset, const std::string& id)
{
    const std::string name = offset.empty() ? id : offset == "Z" ? "GMT" : "GMT" + offset;
    std::unique_ptr<icu::TimeZone> zone(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(name)));
    if (!zone)
        throw std::bad_alloc();
    return zone;
}

std::int32_t number(const std::ssub_match& digits)
{
    return digits.length() == 0 ? 0 : std::stoi(digits.str());
}

// Returns the milliseconds of the digits after a decimal point.
std::int32_t milliseconds(const std::ssub_match& digits)
{
    return std::stoi((digits.str() + "000").substr(0, 3));
}

} // namespace

std::optional<UDate> parse_iso_date(const std::string& text, const std::string& zone)
{
    static const std::regex date("(\\d{4})-(\\d{2})-(\\d{2})"
                                 "(?:[T ](\\d{2}):(\\d{2})(?::(\\d{2})(?:[.,](\\d{1,9}))?)?"
                                 "(Z|[+-]\\d{2}(?::?\\d{2})?)?)?");
    std::smatch fields;
    if (text.size() > max_date || !std::regex_match(text, fields, date))
        return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(make_zone(fields[8].str(), zone).release(), status);
    calendar.setLenient(false);
    calendar.clear();
    calendar.set(number(fields[1]), number(fields[2]) - 1, number(fields[3]), number(fields[4]),
                 number(fields[5]), number(fields[6]));
    calendar.set(UCAL_MILLISECOND, milliseconds(fields[7]));
    const UDate time = calendar.getTime(status);
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    return U_SUCCESS(status) ? std::optional<UDate>(time) : std::nullopt;
}

} // namespace i18n
} // namespace ROVA_2_18

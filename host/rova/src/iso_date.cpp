#include "iso_date.h"

#include <unicode/gregocal.h>
#include <unicode/regex.h>
#include <unicode/timezone.h>

#include <cstdint>
#include <new>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

// No longer text is a date, whatever it begins with.
constexpr std::int32_t max_date = 40;

// ICU shows earlier dates in the Julian calendar.
constexpr std::int32_t min_year = 1583;

/// The parts of a date, as a regular expression finds them.
class date_parts_t
{
public:
    explicit date_parts_t(const icu::UnicodeString& text)
        : m_matcher(u"([0-9]{4})-([0-9]{2})-([0-9]{2})"
                    u"(?:[T ]([0-9]{2}):([0-9]{2})(?::([0-9]{2})(?:[.,]([0-9]{1,9}))?)?"
                    u"(Z|[+-](?:[01][0-9]|2[0-3])(?::?[0-5][0-9])?)?)?",
                    text, 0, m_status),
          m_is_date(m_matcher.matches(m_status) != 0)
    {
        check();
    }

    bool is_date() const { return m_is_date; }

    /// Returns an empty text for a part that is missing.
    std::string text(std::int32_t part)
    {
        std::string result;
        m_matcher.group(part, m_status).toUTF8String(result);
        check();
        return result;
    }

    std::int32_t number(std::int32_t part)
    {
        const std::string digits = text(part);
        return digits.empty() ? 0 : std::stoi(digits);
    }

private:
    // The expression is valid and does not go back far, so each failure is an allocation failure.
    void check() const
    {
        if (U_FAILURE(m_status))
            throw std::bad_alloc();
    }

    UErrorCode m_status = U_ZERO_ERROR;
    icu::RegexMatcher m_matcher;
    bool m_is_date;
};

/// Returns the time in the zone with this id, nothing if a part is out of range. A lenient search
/// returns the next time for one that the zone skips.
std::optional<UDate> get_time(date_parts_t& parts, const std::string& zone, bool is_lenient)
{
    icu::TimeZone* const time_zone =
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone));
    if (time_zone == nullptr)
        throw std::bad_alloc();
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(time_zone, status); // owns the zone
    calendar.setLenient(static_cast<UBool>(is_lenient));
    calendar.setSkippedWallTimeOption(UCAL_WALLTIME_NEXT_VALID);
    calendar.clear();
    calendar.set(parts.number(1), parts.number(2) - 1, parts.number(3), parts.number(4),
                 parts.number(5), parts.number(6));
    calendar.set(UCAL_MILLISECOND, std::stoi((parts.text(7) + "000").substr(0, 3)));
    const UDate time = calendar.getTime(status);
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    return U_SUCCESS(status) ? std::optional<UDate>(time) : std::nullopt;
}

} // namespace

std::optional<UDate> parse_iso_date(const icu::UnicodeString& text, const std::string& zone)
{
    if (text.length() > max_date)
        return std::nullopt;
    date_parts_t parts(text);
    if (!parts.is_date())
        return std::nullopt;
    if (parts.number(1) < min_year || !get_time(parts, "GMT", false))
        return std::nullopt;
    const std::string offset = parts.text(8);
    return get_time(parts, offset.empty() ? zone : offset == "Z" ? "GMT" : "GMT" + offset, true);
}

} // namespace i18n
} // namespace ROVA_2_18

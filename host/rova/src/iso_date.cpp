#include "iso_date.h"

#include <unicode/gregocal.h>
#include <unicode/regex.h>
#include <unicode/timezone.h>

#include <cstdint>
#include <memory>
#include <new>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

// No longer text is a date, whatever it begins with.
constexpr std::int32_t max_date = 40;

/// The parts of a date, as a regular expression finds them.
class date_parts_t
{
public:
    explicit date_parts_t(const icu::UnicodeString& text)
        : m_matcher(u"([0-9]{4})-([0-9]{2})-([0-9]{2})"
                    u"(?:[T ]([0-9]{2}):([0-9]{2})(?::([0-9]{2})(?:[.,]([0-9]{1,9}))?)?"
                    u"(Z|[+-][0-9]{2}(?::?[0-9]{2})?)?)?",
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

} // namespace

std::optional<UDate> parse_iso_date(const icu::UnicodeString& text, const std::string& zone)
{
    if (text.length() > max_date)
        return std::nullopt;
    date_parts_t parts(text);
    if (!parts.is_date())
        return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(make_zone(parts.text(8), zone).release(), status);
    calendar.setLenient(false);
    calendar.clear();
    calendar.set(parts.number(1), parts.number(2) - 1, parts.number(3), parts.number(4),
                 parts.number(5), parts.number(6));
    calendar.set(UCAL_MILLISECOND, std::stoi((parts.text(7) + "000").substr(0, 3)));
    const UDate time = calendar.getTime(status);
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    return U_SUCCESS(status) ? std::optional<UDate>(time) : std::nullopt;
}

} // namespace i18n
} // namespace ROVA_2_18

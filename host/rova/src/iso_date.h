#pragma once

#include <unicode/unistr.h>
#include <unicode/utypes.h>

#include <optional>
#include <string>

namespace ROVA_2_18
{
namespace i18n
{

/// Returns the time that an ISO 8601 text names: "2026-11-21", "2026-11-21T14:05",
/// "2026-11-21T14:05:07.25" or one of the last two with "Z" or an offset such as "+01:00". A blank
/// may replace the "T". Without an offset it is a time in the zone with this id of ICU, or
/// the next time if the zone skips it. The year is at least 1583.
std::optional<UDate> parse_iso_date(const icu::UnicodeString& text, const std::string& zone);

} // namespace i18n
} // namespace ROVA_2_18

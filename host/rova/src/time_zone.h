#pragma once

#include <string>

namespace ROVA_2_18
{
namespace i18n
{

/// Returns ICU's id of the zone that set_time_zone() has set, "GMT" at first.
std::string get_time_zone();

} // namespace i18n
} // namespace ROVA_2_18

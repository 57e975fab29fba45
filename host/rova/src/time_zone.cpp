#include "time_zone.h"

#include <rova/i18n.h>
#include <rova/strings.h>

#include <unicode/timezone.h>
#include <unicode/ucal.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <new>

namespace ROVA_2_18
{
namespace i18n
{

namespace
{

struct zone_t
{
    std::mutex mutex;
    std::string id = "GMT"; ///< guarded by mutex
};

zone_t& zone()
{
    static zone_t only;
    return only;
}

} // namespace

bool set_time_zone(const std::string& id)
{
    const std::unique_ptr<const icu::TimeZone> known(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(id)));
    if (!known)
        throw std::bad_alloc();
    icu::UnicodeString known_id;
    if (known->getID(known_id) == UCAL_UNKNOWN_ZONE_ID)
        return false;
    // A locale name, to which the id is added, has no colons: "GMT+02:00".
    std::string name = id;
    name.erase(std::remove(name.begin(), name.end(), ':'), name.end());
    const std::lock_guard<std::mutex> lock(zone().mutex);
    zone().id.swap(name);
    return true;
}

std::string get_time_zone()
{
    const std::lock_guard<std::mutex> lock(zone().mutex);
    return zone().id;
}

} // namespace i18n
} // namespace ROVA_2_18

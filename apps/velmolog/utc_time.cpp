#include "utc_time.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace velmolog
{

std::string utc_time_now()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts = {};
    gmtime_r(&now.tv_sec, &parts);
    std::array<char, 32> seconds = {};
    std::array<char, 32> fraction = {};
    std::strftime(seconds.data(), seconds.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::snprintf(fraction.data(), fraction.size(), ".%06ldZ", now.tv_nsec / 1000);
    return std::string(seconds.data()) + fraction.data();
}

} // namespace velmolog

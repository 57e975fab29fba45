#pragma once

#include <sys/resource.h>

#include <fstream>

namespace velmoext_1_4_8
{

/// The resources that this process has used since the object was created.
class usage_t
{
public:
    usage_t()
    {
        // Resets the peak of memory, so that an earlier peak does not hide a later one.
        std::ofstream("/proc/self/clear_refs") << 5;
        getrusage(RUSAGE_SELF, &m_before);
    }
    long megabytes() const { return (now().ru_maxrss - m_before.ru_maxrss) / 1024; }
    long seconds() const { return now().ru_utime.tv_sec - m_before.ru_utime.tv_sec; }

private:
    static rusage now()
    {
        rusage usage = {};
        getrusage(RUSAGE_SELF, &usage);
        return usage;
    }

    rusage m_before = {};
};

} // namespace velmoext_1_4_8

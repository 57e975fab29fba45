#pragma once

#include <sys/resource.h>

#include <fstream>

// GCC reports the sanitizer with a macro, clang with this test.
#if defined(__has_feature)
#define VELMOEXT1_HAS_FEATURE(name) __has_feature(name)
#else
#define VELMOEXT1_HAS_FEATURE(name) 0
#endif

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
    /// Returns by how much the peak of memory has grown. Freed memory that the address sanitizer
    /// keeps from being used again does not count.
    long megabytes() const
    {
        return (now().ru_maxrss - m_before.ru_maxrss) / 1024 - max_quarantined_megabytes;
    }
    long seconds() const { return now().ru_utime.tv_sec - m_before.ru_utime.tv_sec; }

private:
#if defined(__SANITIZE_ADDRESS__) || VELMOEXT1_HAS_FEATURE(address_sanitizer)
    // The sanitizer's default `quarantine_size_mb`.
    static constexpr long max_quarantined_megabytes = 256;
#else
    static constexpr long max_quarantined_megabytes = 0;
#endif

    static rusage now()
    {
        rusage usage = {};
        getrusage(RUSAGE_SELF, &usage);
        return usage;
    }

    rusage m_before = {};
};

} // namespace velmoext_1_4_8

#pragma once

#include <malloc.h>

/// As long as it lives, what is longer than 64 KiB gets memory of its own, which is gone as soon as
/// it is given back: whoever looks there once more ends the process.
class own_memory_t
{
public:
    own_memory_t()
    {
        mallopt(M_MMAP_THRESHOLD, 65536);
        malloc_trim(0);
    }
    ~own_memory_t() { mallopt(M_MMAP_THRESHOLD, 131072); }
    own_memory_t(const own_memory_t&) = delete;
    own_memory_t& operator=(const own_memory_t&) = delete;
};

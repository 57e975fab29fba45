#pragma once

#include <malloc.h>

/// While in scope, each allocation of more than 64 KiB gets its own memory mapping. It is unmapped
/// when it is freed, so that a later access ends the process.
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

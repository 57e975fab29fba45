#pragma once

#include <malloc.h>

/// While in scope, each allocation of more than 64 KiB gets its own memory mapping. It is unmapped
/// when it is freed, so that a later access ends the process.
class own_mappings_scope_t
{
public:
    own_mappings_scope_t()
    {
        mallopt(M_MMAP_THRESHOLD, 65536);
        malloc_trim(0);
    }
    ~own_mappings_scope_t() { mallopt(M_MMAP_THRESHOLD, 131072); }
    own_mappings_scope_t(const own_mappings_scope_t&) = delete;
    own_mappings_scope_t& operator=(const own_mappings_scope_t&) = delete;
};

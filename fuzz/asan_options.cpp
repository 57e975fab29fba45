// Default options of the address sanitizer, which looks this name up.
//
// By default, recording the stack of each allocation takes a tenth of the time; two frames are
// enough. The quarantine of 256 MiB takes a quarter, because it exceeds the processor's caches; an
// input frees much less than 1 MiB.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "malloc_context_size=2:quarantine_size_mb=1:thread_local_quarantine_size_kb=32";
}

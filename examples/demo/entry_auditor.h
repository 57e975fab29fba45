/// @file
#pragma once

#include "reporter.h"

#include <sys/stat.h>

#include <cstdint>
#include <string>

namespace audit
{

/// One name in a directory, and the file that it names.
struct entry_t
{
    int directory; ///< its descriptor, not owned
    std::string name;
    const std::wstring& path; ///< as text
    struct stat status;
};

/// Checks single entries of a tree and reports its findings. Opens no file.
class entry_auditor_t
{
public:
    /// Reports files of at least `large` bytes. The reporter is borrowed.
    entry_auditor_t(reporter_t& reporter, std::uint64_t large);

    void audit_name(const entry_t& entry);
    void audit_file(const entry_t& entry);
    void audit_link(const entry_t& entry);

private:
    void audit_access(const entry_t& entry);
    void audit_size(const entry_t& entry);
    void find_broken_link(const entry_t& entry, const std::wstring& target, int error);

    reporter_t& m_reporter;
    const std::uint64_t m_large;
};

} // namespace audit

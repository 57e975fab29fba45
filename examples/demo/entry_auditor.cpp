#include "entry_auditor.h"

#include "error_name.h"
#include "message_words.h"
#include "path_text.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <optional>
#include <system_error>

namespace audit
{
namespace
{

using velmoext::message_t;

std::uint64_t size_of(const entry_t& entry)
{
    return static_cast<std::uint64_t>(entry.status.st_size);
}

std::wstring size_text(const entry_t& entry)
{
    return std::to_wstring(size_of(entry));
}

// Returns four octal digits, as chmod accepts them.
std::wstring mode_text(const entry_t& entry)
{
    std::wstring text;
    for (unsigned shift = 12; shift != 0;) {
        shift -= 3;
        text += static_cast<wchar_t>(L'0' + ((entry.status.st_mode >> shift) & 7U));
    }
    return text;
}

// Returns nothing if the link was removed meanwhile.
std::optional<std::wstring> read_target(const entry_t& entry)
{
    std::array<char, PATH_MAX> target = {};
    const ssize_t length =
        ::readlinkat(entry.directory, entry.name.c_str(), target.data(), target.size());
    if (length < 0)
        return std::nullopt;
    return path_text(std::string(target.data(), static_cast<std::size_t>(length)));
}

} // namespace

entry_auditor_t::entry_auditor_t(reporter_t& reporter, std::uint64_t large)
    : m_reporter(reporter), m_large(large)
{}

void entry_auditor_t::audit_name(const entry_t& entry)
{
    if (!is_printable(entry.name))
        m_reporter.find(message_t::warning, L"name_unprintable", {{L"path", entry.path}});
}

void entry_auditor_t::audit_file(const entry_t& entry)
{
    m_reporter.note(
        file_seen_type,
        {{L"path", entry.path}, {L"size", size_text(entry)}, {L"mode", mode_text(entry)}});
    audit_access(entry);
    audit_size(entry);
}

void entry_auditor_t::audit_access(const entry_t& entry)
{
    const int flags = AT_EACCESS | AT_SYMLINK_NOFOLLOW;
    if (::faccessat(entry.directory, entry.name.c_str(), R_OK, flags) != 0)
        m_reporter.find_failure(L"file_unreadable", entry.path,
                                std::error_code(errno, std::generic_category()));
    if ((entry.status.st_mode & S_IWOTH) == 0)
        return;
    // A user that writes into such a file runs code as its owner or group.
    const bool is_setuid_or_setgid = (entry.status.st_mode & (S_ISUID | S_ISGID)) != 0;
    m_reporter.find(is_setuid_or_setgid ? message_t::critical : message_t::error,
                    L"file_world_writable", {{L"path", entry.path}, {L"mode", mode_text(entry)}});
}

void entry_auditor_t::audit_size(const entry_t& entry)
{
    if (size_of(entry) == 0)
        m_reporter.find(message_t::info, L"file_empty", {{L"path", entry.path}});
    if (size_of(entry) >= m_large)
        m_reporter.find(message_t::warning, L"file_large",
                        {{L"path", entry.path}, {L"size", size_text(entry)}});
}

void entry_auditor_t::audit_link(const entry_t& entry)
{
    struct stat status = {};
    if (::fstatat(entry.directory, entry.name.c_str(), &status, 0) == 0)
        return;
    const int error = errno;
    if (const auto target = read_target(entry))
        find_broken_link(entry, *target, error);
}

void entry_auditor_t::find_broken_link(const entry_t& entry, const std::wstring& target, int error)
{
    const reporter_t::args_t args = {{L"path", entry.path}, {L"target", target}};
    if (error == ENOENT || error == ENOTDIR)
        m_reporter.find(message_t::warning, L"link_dangling", args);
    else if (error == ELOOP)
        m_reporter.find(message_t::error, L"link_loop", args);
    else
        m_reporter.find(message_t::warning, L"link_unreadable",
                        {{L"path", entry.path},
                         {L"target", target},
                         {L"error", error_name({error, std::generic_category()})}});
}

} // namespace audit

#include "tree_walker.h"

#include "path_text.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

namespace audit
{
namespace
{

using velmoext::message_t;

std::error_code read_status(entry_t& entry)
{
    const int failure =
        ::fstatat(entry.directory, entry.name.c_str(), &entry.status, AT_SYMLINK_NOFOLLOW);
    return std::error_code(failure == 0 ? 0 : errno, std::generic_category());
}

} // namespace

tree_walker_t::tree_walker_t(reporter_t& reporter, progress_reporter_t& progress,
                             std::uint64_t large)
    : m_reporter(reporter), m_progress(progress), m_auditor(reporter, large)
{}

std::error_code tree_walker_t::walk(const std::string& top)
{
    if (const std::error_code error = open_top(top))
        return error;
    while (!m_frames.empty() && !m_progress.is_canceled())
        step();
    send_summary(top);
    return std::error_code();
}

std::error_code tree_walker_t::open_top(const std::string& top)
{
    if (const std::error_code error = m_directories.open(top))
        return error;
    m_path = path_text(top);
    ++m_counts.directories;
    return begin_directory();
}

void tree_walker_t::step()
{
    frame_t& frame = m_frames.back();
    m_path.resize(frame.path_length);
    if (m_frames.size() == 1)
        m_progress.report(frame.next, frame.names.size());
    if (frame.next == frame.names.size())
        end_directory();
    else
        visit(std::move(frame.names[frame.next++]));
}

void tree_walker_t::visit(std::string name)
{
    if (m_path.back() != L'/')
        m_path += L'/';
    m_path += path_text(name);
    entry_t entry = {m_directories.descriptor(), std::move(name), m_path, {}};
    const std::error_code error = read_status(entry);
    if (error == std::errc::no_such_file_or_directory)
        return;
    m_auditor.audit_name(entry);
    if (error)
        m_reporter.find_failure(L"file_unreadable", entry.path, error);
    else
        visit_entry(entry);
}

void tree_walker_t::visit_entry(const entry_t& entry)
{
    switch (entry.status.st_mode & S_IFMT) {
    case S_IFDIR:
        ++m_counts.directories;
        enter(entry);
        break;
    case S_IFREG:
        ++m_counts.files;
        m_counts.bytes += static_cast<std::uint64_t>(entry.status.st_size);
        m_auditor.audit_file(entry);
        break;
    case S_IFLNK:
        ++m_counts.links;
        m_auditor.audit_link(entry);
        break;
    default:
        ++m_counts.others;
    }
}

void tree_walker_t::enter(const entry_t& entry)
{
    std::error_code error = m_directories.enter(entry.name);
    if (!error)
        error = begin_directory();
    if (error)
        m_reporter.find_failure(L"directory_unreadable", entry.path, error);
}

std::error_code tree_walker_t::begin_directory()
{
    m_frames.push_back({m_path.size(), {}});
    return m_directories.list(m_frames.back().names);
}

// If the parent cannot be opened again, its remaining names cannot be visited and are skipped.
void tree_walker_t::end_directory()
{
    m_frames.pop_back();
    if (m_frames.empty())
        return;
    const std::error_code error = m_directories.leave();
    frame_t& parent = m_frames.back();
    if (!error || parent.next == parent.names.size())
        return;
    parent.next = parent.names.size();
    m_path.resize(parent.path_length);
    m_reporter.find_failure(L"directory_unreadable", m_path, error);
}

void tree_walker_t::send_summary(const std::string& top)
{
    m_reporter.summarize(is_complete() ? message_t::info : message_t::warning, L"tree_summary",
                         {{L"path", path_text(top)},
                          {L"complete", is_complete() ? L"yes" : L"no"},
                          {L"directories", std::to_wstring(m_counts.directories)},
                          {L"files", std::to_wstring(m_counts.files)},
                          {L"links", std::to_wstring(m_counts.links)},
                          {L"others", std::to_wstring(m_counts.others)},
                          {L"bytes", std::to_wstring(m_counts.bytes)}});
}

} // namespace audit

/// @file
#pragma once

#include "directory_chain.h"
#include "entry_auditor.h"
#include "progress_reporter.h"
#include "reporter.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

namespace audit
{

/// Walks a directory tree once, each directory in the byte order of its names, and reports its
/// findings. Follows no link and opens nothing but directories.
class tree_walker_t
{
public:
    /// Both reporters are borrowed; for `large` see entry_auditor_t.
    tree_walker_t(reporter_t& reporter, progress_reporter_t& progress, std::uint64_t large);

    /// Walks to the tree's end, or until the user cancels the walk, then sends a summary. If the
    /// topmost directory cannot be read, returns the error and sends nothing.
    std::error_code walk(const std::string& top);

    /// Whether the walk reached the tree's end.
    bool is_complete() const { return m_frames.empty(); }

private:
    /// A directory that is being walked.
    struct frame_t
    {
        std::size_t path_length;
        std::vector<std::string> names;
        std::size_t next = 0; ///< which of the names
    };

    struct counts_t
    {
        std::uint64_t directories = 0;
        std::uint64_t files = 0;
        std::uint64_t links = 0;
        std::uint64_t others = 0;
        std::uint64_t bytes = 0; ///< of all files
    };

    std::error_code open_top(const std::string& top);
    void step();
    void visit(std::string name);
    void visit_entry(const entry_t& entry);
    void enter(const entry_t& entry);
    std::error_code begin_directory();
    void end_directory();
    void send_summary(const std::string& top);

    reporter_t& m_reporter;
    progress_reporter_t& m_progress;
    entry_auditor_t m_auditor;
    directory_chain_t m_directories;
    std::vector<frame_t> m_frames; ///< one for each of m_directories
    std::wstring m_path;           ///< of the entry that is being visited, as text
    counts_t m_counts;
};

} // namespace audit

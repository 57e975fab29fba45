/// @file
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

namespace audit
{

/// A directory tree of one test, removed by the destructor whatever its modes and depth are.
class scratch_tree_t
{
public:
    scratch_tree_t();
    scratch_tree_t(const scratch_tree_t&) = delete;
    scratch_tree_t& operator=(const scratch_tree_t&) = delete;
    ~scratch_tree_t();

    const std::string& path() const { return m_path; }
    std::string path(const std::string& name) const { return m_path + '/' + name; }

    /// Creates a file with the mode 0644, whatever the process's mask is.
    void make_file(const std::string& name, off_t size = 1) const;
    /// Creates that many empty files with names of more than 200 bytes.
    void make_empty_files(int count) const;
    void make_directory(const std::string& name) const;
    void make_link(const std::string& name, const std::string& target) const;
    void make_fifo(const std::string& name) const;

    /// Creates that many nested directories, each named "d", and a file "bottom" in the last one.
    void make_depth(std::size_t levels) const;

    void set_mode(const std::string& name, mode_t mode) const;
    void move(const std::string& from, const std::string& to) const;
    void remove_file(const std::string& name) const;

private:
    std::string m_path;
};

} // namespace audit

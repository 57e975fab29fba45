#include "scratch_tree.h"

#include "descriptor.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace audit
{
namespace
{

// Throws, since a test without its tree would prove nothing.
void require(bool condition, const std::string& what)
{
    if (!condition)
        throw std::runtime_error("scratch tree: " + what);
}

void make_file_at(int directory, const std::string& name, off_t size)
{
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    const descriptor_t file(::openat(directory, name.c_str(), flags, 0600));
    require(file.is_open() && ::fchmod(file.get(), 0644) == 0, name);
    require(::ftruncate(file.get(), size) == 0, name);
}

descriptor_t make_directory_at(int directory, const std::string& name)
{
    require(::mkdirat(directory, name.c_str(), 0755) == 0, name);
    descriptor_t created(::openat(directory, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    require(created.is_open(), name);
    return created;
}

// Runs a tool of the system, which works at any depth.
int run_tool(const char* tool, const char* option, const char* operand, const std::string& path)
{
    std::string words[] = {tool, option, operand, path};
    char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(),
                               nullptr};
    pid_t child = -1;
    int status = -1;
    if (::posix_spawnp(&child, tool, nullptr, nullptr, arguments, environ) == 0)
        ::waitpid(child, &status, 0);
    return status;
}

} // namespace

scratch_tree_t::scratch_tree_t() : m_path(std::filesystem::temp_directory_path() / "audit_XXXXXX")
{
    require(::mkdtemp(m_path.data()) != nullptr, m_path);
}

scratch_tree_t::~scratch_tree_t()
{
    EXPECT_EQ(run_tool("chmod", "-R", "u+rwx", m_path), 0);
    EXPECT_EQ(run_tool("rm", "-rf", "--", m_path), 0);
}

void scratch_tree_t::make_file(const std::string& name, off_t size) const
{
    make_file_at(AT_FDCWD, path(name), size);
}

void scratch_tree_t::make_empty_files(int count) const
{
    for (int number = 0; number < count; ++number)
        make_file(std::string(200, 'x') + std::to_string(number), 0);
}

void scratch_tree_t::make_directory(const std::string& name) const
{
    make_directory_at(AT_FDCWD, path(name));
}

void scratch_tree_t::make_link(const std::string& name, const std::string& target) const
{
    require(::symlink(target.c_str(), path(name).c_str()) == 0, name);
}

void scratch_tree_t::make_fifo(const std::string& name) const
{
    require(::mkfifo(path(name).c_str(), 0644) == 0, name);
}

void scratch_tree_t::make_depth(std::size_t levels) const
{
    descriptor_t directory(::open(m_path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (; levels != 0; --levels)
        directory = make_directory_at(directory.get(), "d");
    make_file_at(directory.get(), "bottom", 1);
}

void scratch_tree_t::set_mode(const std::string& name, mode_t mode) const
{
    require(::chmod(path(name).c_str(), mode) == 0, name);
}

void scratch_tree_t::move(const std::string& from, const std::string& to) const
{
    require(std::rename(path(from).c_str(), path(to).c_str()) == 0, from);
}

void scratch_tree_t::remove_file(const std::string& name) const
{
    require(::unlink(path(name).c_str()) == 0, name);
}

} // namespace audit

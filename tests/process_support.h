#pragma once

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

class current_directory_scope_t
{
public:
    explicit current_directory_scope_t(const std::filesystem::path& directory)
        : m_former(std::filesystem::current_path())
    {
        std::filesystem::current_path(directory);
    }
    current_directory_scope_t(const current_directory_scope_t&) = delete;
    current_directory_scope_t& operator=(const current_directory_scope_t&) = delete;
    ~current_directory_scope_t()
    {
        std::error_code error;
        std::filesystem::current_path(m_former, error);
    }

private:
    std::filesystem::path m_former;
};

/// Blocks a process until another one has reached this point.
class signal_t
{
public:
    signal_t() { EXPECT_EQ(pipe2(m_ends.data(), O_CLOEXEC), 0); }
    signal_t(const signal_t&) = delete;
    signal_t& operator=(const signal_t&) = delete;
    ~signal_t()
    {
        close(m_ends[0]);
        close(m_ends[1]);
    }

    void send() const { EXPECT_EQ(write(m_ends[1], "x", 1), 1); }
    void wait() const
    {
        char byte = 0;
        EXPECT_EQ(read(m_ends[0], &byte, 1), 1);
    }

private:
    std::array<int, 2> m_ends = {-1, -1};
};

/// Runs the action in a child process, which exits with the code that it returns. Returns the
/// child's status.
template <typename Action>
int status_of_child(const Action& action)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(action());
    int status = -1;
    while (waitpid(child, &status, 0) == -1 && errno == EINTR) {
    }
    return status;
}

inline bool was_killed(int status)
{
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

inline bool has_exited_with(int status, int code)
{
    return WIFEXITED(status) && WEXITSTATUS(status) == code;
}

#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

class with_current_directory
{
public:
    explicit with_current_directory(const std::filesystem::path& directory)
        : m_former(std::filesystem::current_path())
    {
        std::filesystem::current_path(directory);
    }
    with_current_directory(const with_current_directory&) = delete;
    with_current_directory& operator=(const with_current_directory&) = delete;
    ~with_current_directory()
    {
        std::error_code error;
        std::filesystem::current_path(m_former, error);
    }

private:
    std::filesystem::path m_former;
};

/// Answers how the child ended, in which the action ran and gave the exit code.
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

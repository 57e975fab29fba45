#pragma once

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>
#include <utility>
#include <vector>

namespace velmolog
{

typedef std::vector<std::string> lines_t;

/// Runs a program with these arguments. Its standard output is the descriptor if that is not -1.
inline pid_t run_program(std::vector<std::string> command, int output = -1)
{
    std::vector<char*> arguments;
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    const pid_t child = fork();
    if (child != 0)
        return child;
    if (output != -1)
        dup2(output, STDOUT_FILENO);
    execv(arguments.front(), arguments.data());
    _exit(127);
}

/// Returns the child's status. Sets the time that it has used.
inline int wait_for_end(pid_t child, rusage* usage = nullptr)
{
    int status = -1;
    while (wait4(child, &status, 0, usage) == -1 && errno == EINTR) {
    }
    return status;
}

/// The program that prints the type of each message of the logs that it follows.
class follower_process_t
{
public:
    explicit follower_process_t(const std::vector<std::string>& arguments)
    {
        std::array<int, 2> ends = {-1, -1};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        std::vector<std::string> command = {PRINTER};
        command.insert(command.end(), arguments.begin(), arguments.end());
        m_child = run_program(command, ends[1]);
        close(ends[1]);
        m_output = ends[0];
    }
    follower_process_t(const follower_process_t&) = delete;
    follower_process_t& operator=(const follower_process_t&) = delete;
    /// Expects that the process ends in order.
    ~follower_process_t()
    {
        if (m_child != -1) {
            EXPECT_TRUE(WIFEXITED(end()));
        }
        close(m_output);
    }

    pid_t process() const { return m_child; }
    const lines_t& lines() const { return m_lines; }

    /// Returns whether the line is printed within the time.
    bool prints(const std::string& line, std::chrono::milliseconds time = std::chrono::seconds(20))
    {
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::find(m_lines.begin(), m_lines.end(), line) == m_lines.end())
            if (!read_until(end))
                return false;
        return true;
    }

    /// Sends the signal, 0 for none, and reads all that is printed until the end. Returns the
    /// status.
    int end(int signal = SIGTERM)
    {
        kill(m_child, signal);
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (read_until(end)) {
        }
        const int status = wait_for_end(m_child, &m_usage);
        m_child = -1;
        return status;
    }

    /// Returns the processor's time that the process had until its end.
    double seconds() const
    {
        const auto seconds_of = [](const timeval& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
        };
        return seconds_of(m_usage.ru_utime) + seconds_of(m_usage.ru_stime);
    }

private:
    // Returns false at the end of the output or of the time.
    bool read_until(std::chrono::steady_clock::time_point end)
    {
        const auto time =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        pollfd input = {m_output, POLLIN, 0};
        if (time.count() <= 0 || poll(&input, 1, static_cast<int>(time.count())) != 1)
            return false;
        std::array<char, 65536> bytes = {};
        const ssize_t size = read(m_output, bytes.data(), bytes.size());
        if (size <= 0)
            return false;
        for (const char byte : std::string(bytes.data(), static_cast<std::size_t>(size))) {
            if (byte == '\n')
                m_lines.push_back(std::exchange(m_line, std::string()));
            else
                m_line += byte;
        }
        return true;
    }

    pid_t m_child = -1;
    int m_output = -1;
    std::string m_line;
    lines_t m_lines;
    rusage m_usage = {};
};

} // namespace velmolog

#include "audit_process.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <ios>

namespace audit
{
namespace
{

const int could_not_start = 127;
const unsigned max_run_seconds = 50;

// Sets no_new_privs, so that execve() cannot restore the capabilities that root has by default.
bool drop_privileges()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets = {};
    if (::syscall(SYS_capget, &header, sets.data()) != 0)
        return false;
    const unsigned kept = ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
    sets[0].effective &= kept;
    sets[0].permitted &= kept;
    sets[0].inheritable &= kept;
    return ::syscall(SYS_capset, &header, sets.data()) == 0 &&
           ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
}

bool limit_descriptors(unsigned most)
{
    const rlimit limit = {most, most};
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
}

bool set_language(const std::map<std::string, std::string>& language)
{
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE"})
        ::unsetenv(name);
    return std::all_of(language.begin(), language.end(), [](const auto& variable) {
        return ::setenv(variable.first.c_str(), variable.second.c_str(), 1) == 0;
    });
}

std::string contents(std::FILE* file)
{
    std::string text;
    std::rewind(file);
    for (int byte = std::fgetc(file); byte != EOF; byte = std::fgetc(file))
        text += static_cast<char>(byte);
    return text;
}

} // namespace

audit_process_t::audit_process_t(const std::vector<std::string>& arguments, const launch_t& launch)
    : m_out(std::tmpfile()), m_err(std::tmpfile()), m_id(::fork())
{
    if (m_id == 0)
        exec(arguments, launch);
}

audit_process_t::~audit_process_t()
{
    if (m_id < 0)
        return;
    ::kill(m_id, SIGKILL);
    finish();
}

void audit_process_t::interrupt() const
{
    ::kill(m_id, SIGINT);
}

bool audit_process_t::catches_interrupt() const
{
    std::ifstream status("/proc/" + std::to_string(m_id) + "/status");
    std::string word;
    while (status >> word && word != "SigCgt:") {
    }
    std::uint64_t caught = 0;
    status >> std::hex >> caught;
    EXPECT_TRUE(status);
    return ((caught >> (SIGINT - 1U)) & 1U) != 0;
}

result_t audit_process_t::finish()
{
    int status = -1;
    EXPECT_EQ(::waitpid(m_id, &status, 0), m_id);
    m_id = -1;
    const int exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return {exit_code, contents(m_out.get()), contents(m_err.get())};
}

void audit_process_t::exec(std::vector<std::string> arguments, const launch_t& launch)
{
    if (launch.is_plain)
        arguments.insert(arguments.begin(), "--plain");
    arguments.insert(arguments.begin(), AUDIT_PROGRAM);
    std::vector<char*> words;
    for (std::string& argument : arguments)
        words.push_back(argument.data());
    words.push_back(nullptr);

    std::signal(SIGINT, launch.ignores_interrupt ? SIG_IGN : SIG_DFL);
    ::alarm(max_run_seconds);
    const bool is_ready =
        redirect(launch.out) && set_language(launch.language) &&
        (launch.is_privileged || drop_privileges()) &&
        (launch.max_descriptors == 0 || limit_descriptors(launch.max_descriptors));
    if (is_ready)
        ::execv(AUDIT_PROGRAM, words.data());
    ::_exit(could_not_start);
}

bool audit_process_t::redirect(int out)
{
    if (::dup2(::fileno(m_err.get()), STDERR_FILENO) < 0)
        return false;
    if (out == launch_t::closed)
        return ::close(STDOUT_FILENO) == 0;
    return ::dup2(out == launch_t::file ? ::fileno(m_out.get()) : out, STDOUT_FILENO) >= 0;
}

result_t run_audit(const std::vector<std::string>& arguments, const launch_t& launch)
{
    return audit_process_t(arguments, launch).finish();
}

std::vector<std::string> lines_of(const std::string& text)
{
    std::vector<std::string> lines;
    auto begin = text.begin();
    for (auto end = begin; (end = std::find(begin, text.end(), '\n')) != text.end();
         begin = end + 1)
        lines.emplace_back(begin, end);
    EXPECT_TRUE(begin == text.end()) << "no line end: " << std::string(begin, text.end());
    return lines;
}

narrow_pipe_t::narrow_pipe_t()
{
    std::array<int, 2> ends = {-1, -1};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    reader = descriptor_t(ends[0]);
    writer = descriptor_t(ends[1]);
    EXPECT_GE(::fcntl(writer.get(), F_SETPIPE_SZ, 4096), 4096);
}

std::string read_all(const descriptor_t& source)
{
    std::string text;
    std::array<char, 4096> buffer = {};
    for (ssize_t length = 0; (length = ::read(source.get(), buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(length));
    return text;
}

interrupted_run_t::interrupted_run_t(const std::vector<std::string>& arguments, launch_t launch)
{
    narrow_pipe_t pipe;
    launch.out = pipe.writer.get();
    audit_process_t process(arguments, launch);
    pipe.writer = descriptor_t();
    char first = 0;
    EXPECT_EQ(::read(pipe.reader.get(), &first, 1), 1);
    process.interrupt();
    lines = lines_of(first + read_all(pipe.reader));
    result = process.finish();
}

} // namespace audit

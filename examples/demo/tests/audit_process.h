/// @file
#pragma once

#include "descriptor.h"

#include <sys/types.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace audit
{

/// Settings for the start of a process, with the usual ones as defaults.
struct launch_t
{
    static const int file = -1;   ///< for `out`: a file, whose contents are in the result
    static const int closed = -2; ///< for `out`: standard output is closed

    int out = file;            ///< a descriptor, or one of the above
    bool is_plain = true;      ///< messages are shown as they are
    bool is_privileged = true; ///< false: file modes restrict even a process of root
    bool ignores_interrupt = false;
    unsigned max_descriptors = 0; ///< 0: the limit stays
    /// The only variables of the environment that select the language.
    std::map<std::string, std::string> language = {{"LC_ALL", "C"}};
};

struct result_t
{
    int exit_code = -1; ///< negative: the number of the signal that ended it
    std::string out;
    std::string err;
};

/// The program under test. A program that does not end is killed.
class audit_process_t
{
public:
    explicit audit_process_t(const std::vector<std::string>& arguments,
                             const launch_t& launch = launch_t());
    audit_process_t(const audit_process_t&) = delete;
    audit_process_t& operator=(const audit_process_t&) = delete;
    ~audit_process_t();

    void interrupt() const;

    /// Whether the system reports that the process catches SIGINT.
    bool catches_interrupt() const;

    /// Waits for its end.
    result_t finish();

private:
    struct close_file_t
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    typedef std::unique_ptr<std::FILE, close_file_t> file_t;

    [[noreturn]] void exec(std::vector<std::string> arguments, const launch_t& launch);
    bool redirect(int out);

    file_t m_out;
    file_t m_err;
    pid_t m_id;
};

/// Starts the program and waits for its end.
result_t run_audit(const std::vector<std::string>& arguments, const launch_t& launch = launch_t());

/// Splits a text into lines. Each line must have its end.
std::vector<std::string> lines_of(const std::string& text);

/// A pipe that is full after a few lines.
struct narrow_pipe_t
{
    narrow_pipe_t();

    descriptor_t reader;
    descriptor_t writer;
};

/// Reads until the other end is closed.
std::string read_all(const descriptor_t& source);

/// A run that receives SIGINT once its first output has arrived, while it waits for a reader.
struct interrupted_run_t
{
    explicit interrupted_run_t(const std::vector<std::string>& arguments,
                               launch_t launch = launch_t());

    std::vector<std::string> lines;
    result_t result;
};

} // namespace audit

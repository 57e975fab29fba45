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

/// How a process is started, where it differs from the usual.
struct launch_t
{
    static const int file = -1;   ///< for `out`: a file, whose contents are in the result
    static const int closed = -2; ///< for `out`: there is no standard output

    int out = file;            ///< a descriptor, or one of the above
    bool is_plain = true;      ///< messages are shown as they are
    bool is_privileged = true; ///< false: file modes bind it even if it is root's
    bool ignores_interrupt = false;
    unsigned most_descriptors = 0; ///< 0: the limit stays
    /// What the environment tells of the language, and nothing else does.
    std::map<std::string, std::string> language = {{"LC_ALL", "C"}};
};

struct result_t
{
    int exit_code = -1; ///< negative: the number of the signal that ended it
    std::string out;
    std::string err;
};

/// The program under test. It is ended where it hangs.
class audit_process_t
{
public:
    explicit audit_process_t(const std::vector<std::string>& arguments,
                             const launch_t& launch = launch_t());
    audit_process_t(const audit_process_t&) = delete;
    audit_process_t& operator=(const audit_process_t&) = delete;
    ~audit_process_t();

    void interrupt() const;

    /// Whether an interrupt would be caught, as the system tells it.
    bool catches_interrupt() const;

    /// Waits for its end.
    result_t finish();

private:
    struct close_file_t
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    typedef std::unique_ptr<std::FILE, close_file_t> file_t;

    [[noreturn]] void become(std::vector<std::string> arguments, const launch_t& launch);
    bool redirect(int out);

    file_t m_out;
    file_t m_err;
    pid_t m_id;
};

/// Starts the program and waits for its end.
result_t run_audit(const std::vector<std::string>& arguments, const launch_t& launch = launch_t());

/// The lines of a text, each of which must have its end.
std::vector<std::string> lines_of(const std::string& text);

/// A pipe that is full after a few lines.
struct narrow_pipe_t
{
    narrow_pipe_t();

    descriptor_t reader;
    descriptor_t writer;
};

/// What comes until the other end is closed.
std::string read_all(const descriptor_t& source);

/// A run that gets an interrupt when its first output is there, while it waits for that to be read.
struct interrupted_run_t
{
    explicit interrupted_run_t(const std::vector<std::string>& arguments,
                               launch_t launch = launch_t());

    std::vector<std::string> lines;
    result_t result;
};

} // namespace audit

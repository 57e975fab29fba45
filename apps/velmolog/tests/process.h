#pragma once

#include "scratch_folder.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

/// The result of a process.
struct process_result_t
{
    int status = -1; ///< negative if it did not exit
    std::string output;
    std::string errors;
};

/// Runs velmolog with its output in files of the folder.
inline process_result_t run_velmolog(const scratch_folder_t& folder,
                                     std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), VELMOLOG);
    std::vector<char*> words;
    for (std::string& argument : arguments)
        words.push_back(argument.data());
    words.push_back(nullptr);
    const std::string output = folder.name("output");
    const std::string errors = folder.name("errors");
    const pid_t child = fork();
    if (child == 0) {
        constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC;
        dup2(open(output.c_str(), flags, 0600), STDOUT_FILENO);
        dup2(open(errors.c_str(), flags, 0600), STDERR_FILENO);
        execv(words[0], words.data());
        _exit(127);
    }
    int status = -1;
    while (waitpid(child, &status, 0) == -1 && errno == EINTR) {
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, folder.read("output"),
            folder.read("errors")};
}

// Prints the type of each message of the logs, a line each, as they are appended. With "-COUNT"
// ends after so many messages. If the environment has VELMOLOG_WITHOUT_EVENTS, the system reports
// no changes.

#include "log_follower.h"

#include <rova/strings.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

extern "C" int inotify_init1(int flags)
{
    if (std::getenv("VELMOLOG_WITHOUT_EVENTS") == nullptr) // NOLINT(concurrency-mt-unsafe)
        return static_cast<int>(syscall(SYS_inotify_init1, flags));
    errno = EMFILE;
    return -1;
}

int main(int argc, char** argv)
{
    std::vector<std::string> logs(argv + 1, argv + argc);
    long count = -1;
    if (!logs.empty() && logs.front().front() == '-') {
        count = -std::stol(logs.front());
        logs.erase(logs.begin());
    }
    velmolog::log_follower_t follower(logs);
    follower.run(
        [&](const velmolog::entry_t& entry) {
            if (logs.size() > 1)
                std::cout << entry.log.substr(entry.log.rfind('/') + 1) << ' ';
            std::cout << ROVA_2_18::strings::utf16_to_utf8(entry.message->get_type()) << '\n';
            return --count != 0;
        },
        [] { std::cout.flush(); });
    std::cout.flush();
    return follower.has_damage() ? 1 : 0;
}

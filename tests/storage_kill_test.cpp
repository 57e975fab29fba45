// A recording process is killed at any moment. Messages that were closed before must survive.

#include "random_source.h"
#include "storage_support.h"
#include "system_faults.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

// The system calls that change the disk.
const std::set<std::uint64_t> disk_changes = {
    SYS_write,    SYS_pwrite64,  SYS_writev,          SYS_ftruncate, SYS_truncate, SYS_open,
    SYS_openat,   SYS_link,      SYS_linkat,          SYS_unlink,    SYS_unlinkat, SYS_rename,
    SYS_renameat, SYS_renameat2, SYS_copy_file_range, SYS_sendfile,  SYS_fchmod};

void wait_for(pid_t child, int& status)
{
    while (waitpid(child, &status, 0) == -1 && errno == EINTR) {
    }
}

// Runs the steps in a child process and kills it right before or after one of its changes of the
// disk. They are numbered from 0; each change counts twice, at its beginning and its end. Returns
// false if the process ended with fewer of them.
bool kill_at_change(int number, const std::function<void()>& steps)
{
    const pid_t child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        steps();
        _exit(0);
    }
    int status = 0;
    wait_for(child, status);
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    bool is_change = false;
    for (int seen = -1; seen < number;) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        wait_for(child, status);
        if (!WIFSTOPPED(status)) {
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
            return false;
        }
        __ptrace_syscall_info info = {};
        ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof(info), &info);
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY)
            is_change = disk_changes.count(info.entry.nr) != 0;
        seen += is_change ? 1 : 0;
    }
    kill(child, SIGKILL);
    wait_for(child, status);
    EXPECT_TRUE(WIFSIGNALED(status));
    return true;
}

class storage_kill_test : public storage_test_t
{
protected:
    static constexpr int old_messages = 60;

    // Creates a log in a form that a start rewrites, with a copy.
    void make_foreign_log(const std::string& leaf = "log.xml") const
    {
        std::vector<std::string> types;
        for (int i = 0; i < old_messages; ++i)
            types.push_back(std::to_string(i));
        std::filesystem::remove(m_folder.name("log.xml.tmp"));
        std::filesystem::remove(m_folder.name("log.xml"));
        m_folder.write(leaf, foreign_log(types));
    }

    // Creates a log in the written form.
    void make_old_log() const
    {
        make_foreign_log();
        record_all(L"");
    }

    void record_more(const std::string& leaf = "log.xml") const
    {
        const storage_ptr_t storage = get(leaf);
        storage->start_recording();
        record(storage, L"new");
        storage->stop_recording();
    }

    // Expects that a later start and stop create a whole log from the remaining files.
    void expect_nothing_lost(const std::string& when, const std::string& leaf = "log.xml") const
    {
        const storage_ptr_t storage = get(leaf);
        ASSERT_TRUE(storage->start_recording()) << when;
        ASSERT_TRUE(storage->stop_recording()) << when;
        const std::wstring types = types_in();
        std::wstring expected;
        for (int i = 0; i < old_messages; ++i)
            expected += std::to_wstring(i) + L";";
        EXPECT_EQ(types.substr(0, expected.size()), expected) << when;
        EXPECT_FALSE(m_folder.has(leaf + ".tmp")) << when;
        const std::string log = m_folder.read("log.xml");
        EXPECT_EQ(log.substr(log.size() - 7), "</log>\n") << when;
    }

    // Returns the number of changes. Creates the log again for each.
    int kill_at_each_change(const std::function<void()>& make_log,
                            const std::string& leaf = "log.xml") const
    {
        for (int number = 0;; ++number) {
            make_log();
            if (!kill_at_change(number, [&] { record_more(leaf); }))
                return number;
            expect_nothing_lost("killed at " + std::to_string(number), leaf);
        }
    }
};

} // namespace

TEST_F(storage_kill_test, no_older_message_is_lost_by_a_kill_at_any_change_of_the_disk)
{
    EXPECT_GE(kill_at_each_change([this] { make_old_log(); }), 4)
        << "truncate and write, before and after each";
}

TEST_F(storage_kill_test, no_older_message_of_a_foreign_log_is_lost_by_a_kill_at_any_change)
{
    EXPECT_GT(kill_at_each_change([this] { make_foreign_log(); }), 12)
        << "copy, link, truncate, write and unlink, before and after each";
}

TEST_F(storage_kill_test, no_older_message_is_lost_by_a_kill_after_any_short_write)
{
    const short_io_scope_t short_io(SIZE_MAX, 200);
    EXPECT_GT(kill_at_each_change([this] { make_foreign_log(); }), 50)
        << "several chunks of the copy and of the new log each";
}

TEST_F(storage_kill_test, no_older_message_is_lost_through_a_link)
{
    std::filesystem::create_directory(m_folder.name("elsewhere"));
    std::filesystem::create_symlink("../log.xml", m_folder.name("elsewhere/link.xml"));
    for (const bool is_foreign : {false, true})
        EXPECT_GE(kill_at_each_change([&] { is_foreign ? make_foreign_log() : make_old_log(); },
                                      "elsewhere/link.xml"),
                  4);
}

TEST_F(storage_kill_test, no_older_message_is_lost_without_hard_links)
{
    const faults_scope_t no_links([](const std::string& call, int) {
        return call == "open unnamed" ? EOPNOTSUPP : call == "linkat" || call == "link" ? EPERM : 0;
    });
    EXPECT_GT(kill_at_each_change([this] { make_foreign_log(); }), 12);
}

TEST_F(storage_kill_test, no_older_message_of_a_copy_that_was_left_is_lost)
{
    EXPECT_GT(kill_at_each_change([this] { make_foreign_log("log.xml.tmp"); }), 6)
        << "truncate, write and unlink, before and after each";
}

TEST_F(storage_kill_test, no_older_message_is_lost_when_the_next_process_is_killed_too)
{
    // Even numbers are before a change. For the disk that equals the end of the previous one.
    for (int first = 0;; first += 2) {
        for (int second = 0;; second += 2) {
            make_foreign_log();
            if (!kill_at_change(first, [this] { record_more(); }))
                return;
            if (!kill_at_change(second, [this] { record_more(); }))
                break;
            expect_nothing_lost("killed at " + std::to_string(first) + " and " +
                                std::to_string(second));
        }
    }
}

TEST_F(storage_kill_test, two_processes_record_in_turn_and_lose_nothing)
{
    const int rounds = 100;
    const auto record_in_turn = [&](const std::wstring& name) {
        const storage_ptr_t storage = get();
        for (int round = 0; round < rounds;) {
            if (!storage->start_recording())
                continue;
            // A second recorder at the same time would find this file.
            const int alone = open(m_folder.name("alone").c_str(), O_CREAT | O_EXCL, 0600);
            if (alone == -1)
                _exit(1);
            close(alone);
            record(storage, name + std::to_wstring(round++));
            unlink(m_folder.name("alone").c_str());
            storage->stop_recording();
        }
        _exit(0);
    };
    const pid_t first = fork();
    if (first == 0)
        record_in_turn(L"a");
    const pid_t second = fork();
    if (second == 0)
        record_in_turn(L"b");
    for (const pid_t child : {first, second}) {
        int status = 0;
        wait_for(child, status);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    const std::wstring types = L";" + types_in();
    for (const wchar_t name : {L'a', L'b'}) {
        std::size_t position = 0;
        for (int round = 0; round < rounds; ++round) {
            position = types.find(L";" + (name + std::to_wstring(round)) + L";", position);
            ASSERT_NE(position, std::wstring::npos) << name << round;
        }
    }
}

namespace
{

// Each process records through its own spelling until a timer ends it, and writes the closed
// messages to a file.
class storage_random_kill_test : public storage_kill_test
{
protected:
    storage_random_kill_test()
    {
        std::filesystem::create_directory(m_folder.name("elsewhere"));
        std::filesystem::create_symlink("../log.xml", m_folder.name("elsewhere/link.xml"));
    }

    pid_t start_process(std::size_t spelling, int number, std::size_t microseconds) const
    {
        const pid_t child = fork();
        if (child != 0)
            return child;
        const std::array<const char*, 3> spellings = {"log.xml", "./log.xml", "elsewhere/link.xml"};
        const int notes = open(m_folder.name("notes").c_str(), O_WRONLY | O_APPEND | O_CREAT, 0600);
        itimerval timer = {};
        timer.it_value.tv_usec = static_cast<suseconds_t>(microseconds);
        setitimer(ITIMER_REAL, &timer, nullptr);
        const storage_ptr_t storage = get(spellings.at(spelling));
        for (int count = 0;;) {
            if (!storage->start_recording())
                continue;
            const std::string type = std::to_string(number) + "." + std::to_string(count++);
            record(storage, std::wstring(type.begin(), type.end()));
            storage->stop_recording();
            const std::string note = type + ";";
            if (write(notes, note.data(), note.size()) == -1)
                _exit(1);
        }
    }

    static std::vector<std::string> split(const std::string& types)
    {
        std::vector<std::string> parts;
        std::istringstream text(types);
        for (std::string part; std::getline(text, part, ';');)
            parts.push_back(part);
        return parts;
    }
};

} // namespace

TEST_F(storage_random_kill_test, each_closed_message_is_in_the_log_once_after_kills_at_random_times)
{
    const random_seeds_t seeds(60);
    random_source_t random(seeds.first);
    std::map<pid_t, std::size_t> spellings;
    const int kills = static_cast<int>(seeds.count);
    const auto wait_for_one = [&] {
        int status = 0;
        const pid_t killed = wait(&status);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM);
        const std::size_t spelling = spellings.at(killed);
        spellings.erase(killed);
        return spelling;
    };
    for (int number = 0; number < kills; ++number) {
        const std::size_t spelling = spellings.size() < 3 ? spellings.size() : wait_for_one();
        spellings[start_process(spelling, number, random.between(100, 8000))] = spelling;
    }
    while (!spellings.empty())
        wait_for_one();
    std::map<std::string, int> counts;
    const std::wstring types = types_in();
    for (const std::string& type : split(std::string(types.begin(), types.end())))
        EXPECT_EQ(++counts[type], 1) << type;
    for (const std::string& type : split(m_folder.read("notes")))
        EXPECT_EQ(counts[type], 1) << type;
}

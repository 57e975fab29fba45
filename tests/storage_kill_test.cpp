// A recording process dies at any instant; what was recorded and closed before must outlive it.

#include "storage_support.h"
#include "system_faults.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <functional>
#include <set>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace velmoext_1_4_8;

namespace
{

// The calls that change what stands on the disk.
const std::set<std::uint64_t> disk_changes = {
    SYS_write,    SYS_pwrite64,  SYS_writev,          SYS_ftruncate, SYS_truncate, SYS_open,
    SYS_openat,   SYS_link,      SYS_linkat,          SYS_unlink,    SYS_unlinkat, SYS_rename,
    SYS_renameat, SYS_renameat2, SYS_copy_file_range, SYS_sendfile,  SYS_fchmod};

void wait_for(pid_t child, int& status)
{
    while (waitpid(child, &status, 0) == -1 && errno == EINTR) {
    }
}

// Runs the steps in a process of its own and kills that just before or just after one of its
// changes of the disk. They are numbered from 0, a change's beginning and its end counting each;
// false where the process came to its end with fewer of them.
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

    void make_old_log() const
    {
        std::filesystem::remove(m_folder.name("log.xml.tmp"));
        std::filesystem::remove(m_folder.name("log.xml"));
        const storage_ptr storage = get();
        storage->start_recording();
        for (int i = 0; i < old_messages; ++i)
            record(storage, std::to_wstring(i));
        storage->stop_recording();
    }

    void record_more() const
    {
        const storage_ptr storage = get();
        storage->start_recording();
        record(storage, L"new");
        storage->stop_recording();
    }

    // A later start and stop must make a whole log of what the processes left.
    void expect_nothing_lost(const std::string& when) const
    {
        const storage_ptr storage = get();
        ASSERT_TRUE(storage->start_recording()) << when;
        ASSERT_TRUE(storage->stop_recording()) << when;
        const std::wstring types = types_in();
        std::wstring expected;
        for (int i = 0; i < old_messages; ++i)
            expected += std::to_wstring(i) + L";";
        EXPECT_EQ(types.substr(0, expected.size()), expected) << when;
        EXPECT_FALSE(m_folder.has("log.xml.tmp")) << when;
        const std::string log = m_folder.read("log.xml");
        EXPECT_EQ(log.substr(log.size() - 7), "</log>\n") << when;
    }

    // Answers how many they were.
    int kill_at_each_change() const
    {
        for (int number = 0;; ++number) {
            make_old_log();
            if (!kill_at_change(number, [this] { record_more(); }))
                return number;
            expect_nothing_lost("killed at " + std::to_string(number));
        }
    }
};

} // namespace

TEST_F(storage_kill_test, no_older_message_is_lost_whichever_change_of_the_disk_is_the_last)
{
    EXPECT_GT(kill_at_each_change(), 12)
        << "copy, link, truncate, write and unlink, before and after each";
}

TEST_F(storage_kill_test, no_older_message_is_lost_wherever_a_write_is_cut_short)
{
    const with_short_pieces pieces(SIZE_MAX, 200);
    EXPECT_GT(kill_at_each_change(), 60) << "several pieces of the copy and of the new log each";
}

TEST_F(storage_kill_test, no_older_message_is_lost_when_the_next_process_is_killed_too)
{
    for (int first = 0;; ++first) {
        for (int second = 0;; ++second) {
            make_old_log();
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
    const auto fight = [&](const std::wstring& name) {
        const storage_ptr storage = get();
        for (int round = 0; round < rounds;) {
            if (!storage->start_recording())
                continue;
            // A second recorder at the same time would find this file there.
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
        fight(L"a");
    const pid_t second = fork();
    if (second == 0)
        fight(L"b");
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

// A process forks while it records.

#include "process_support.h"
#include "storage_support.h"
#include "system_faults.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

class storage_fork_test : public storage_test_t
{
protected:
    typedef std::function<void(const storage_ptr_t&)> action_t;

    // A process records "a" and forks. The child acts once while its parent lives. It records and
    // stops after the parent's end. Returns when both have ended.
    void run(
        const action_t& while_both_live, const action_t& parent, const action_t& child,
        const std::function<void()>& before_fork = [] {}) const
    {
        const signal_t child_is_ready;
        const signal_t parent_has_ended;
        const signal_t child_has_ended;
        status_of_child([&] {
            const storage_ptr_t storage = get();
            storage->start_recording();
            record(storage, L"a");
            before_fork();
            if (fork() == 0) {
                while_both_live(storage);
                child_is_ready.send();
                parent_has_ended.wait();
                child(storage);
                storage->stop_recording();
                child_has_ended.send();
                _exit(0);
            }
            child_is_ready.wait();
            parent(storage);
            return 0;
        });
        parent_has_ended.send();
        child_has_ended.wait();
    }

    static void record_many(const storage_ptr_t& storage, const std::wstring& name, int count)
    {
        for (int i = 0; i < count; ++i)
            record(storage, name + std::to_wstring(i));
    }

    static std::wstring numbered_types(const std::wstring& name, int count)
    {
        std::wstring types;
        for (int i = 0; i < count; ++i)
            types += name + std::to_wstring(i) + L";";
        return types;
    }

    // Takes effect with the next child. If the user has no permission, the test runs without a new
    // namespace.
    static void begin_pid_namespace()
    {
        if (unshare(CLONE_NEWPID) != 0)
            unshare(CLONE_NEWUSER | CLONE_NEWPID);
    }

    // Returns 0 if the log is still locked after a child of its recorder has ended.
    int fork_and_lock() const
    {
        const storage_ptr_t storage = get();
        storage->start_recording();
        begin_pid_namespace();
        status_of_child([] { return 0; });
        return get("./log.xml")->start_recording() ? 1 : 0;
    }

    // Runs an action in another thread again and again.
    template <typename Action>
    static std::thread repeat_until(const std::atomic<bool>& is_over, const Action& action)
    {
        return std::thread([&is_over, action] {
            while (!is_over)
                action();
        });
    }

    static void do_nothing(const storage_ptr_t& /*storage*/) {}
    static void kill_self(const storage_ptr_t& /*storage*/) { raise(SIGKILL); }
    static void record_b(const storage_ptr_t& storage) { record(storage, L"b"); }
};

} // namespace

TEST_F(storage_fork_test, a_child_that_releases_the_storage_leaves_the_recording_alone)
{
    storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    const auto begin = std::chrono::steady_clock::now();
    const int status = status_of_child([&] {
        record(storage, L"of the child");
        storage.reset();
        return 0;
    });
    EXPECT_TRUE(has_exited_with(status, 0));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    record(storage, L"b");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"a;b;");
}

// Both are the first process of a namespace.
TEST_F(storage_fork_test, a_child_with_the_process_id_of_its_parent_does_not_release_the_lock)
{
    const auto fork_in_namespace = [this] {
        begin_pid_namespace();
        return WEXITSTATUS(status_of_child([this] { return fork_and_lock(); }));
    };
    EXPECT_TRUE(has_exited_with(status_of_child(fork_in_namespace), 0));
}

TEST_F(storage_fork_test, a_child_that_stops_the_recording_stops_only_its_own_part)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    const int status = status_of_child([&] { return storage->stop_recording() ? 0 : 1; });
    EXPECT_TRUE(has_exited_with(status, 0));
    EXPECT_FALSE(get("./log.xml")->start_recording()) << "the child released the lock";
    record(storage, L"b");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_fork_test, a_child_that_records_much_does_not_damage_the_log)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record_many(storage, L"before", 1000);
    EXPECT_TRUE(has_exited_with(status_of_child([&] {
                                    record_many(storage, L"child", 1000);
                                    return 0;
                                }),
                                0));
    record_many(storage, L"behind", 1000);
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), numbered_types(L"before", 1000) + numbered_types(L"behind", 1000));
}

TEST_F(storage_fork_test, a_child_cannot_record_until_its_parent_has_stopped)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    EXPECT_TRUE(has_exited_with(status_of_child([&] {
                                    storage->stop_recording();
                                    return storage->start_recording() ? 1 : 0;
                                }),
                                0));
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_TRUE(has_exited_with(status_of_child([&] {
                                    const bool is_started = storage->start_recording();
                                    record(storage, L"b");
                                    storage->stop_recording();
                                    return is_started ? 0 : 1;
                                }),
                                0));
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_fork_test, a_child_that_stays_alive_does_not_keep_the_log_locked)
{
    const auto stop_beside_a_child = [&] {
        const storage_ptr_t storage = get();
        storage->start_recording();
        const pid_t child = fork();
        if (child == 0) {
            alarm(60);
            pause();
        }
        storage->stop_recording();
        const bool is_free = get("./log.xml")->start_recording();
        kill(child, SIGKILL);
        return is_free ? 0 : 1;
    };
    EXPECT_TRUE(has_exited_with(status_of_child(stop_beside_a_child), 0));
}

// ---- a child that outlives its parent

TEST_F(storage_fork_test, a_process_that_becomes_a_daemon_loses_nothing)
{
    const signal_t has_ended;
    EXPECT_TRUE(has_exited_with(status_of_child([&] {
                                    const storage_ptr_t storage = get();
                                    storage->start_recording();
                                    record_many(storage, L"before", 100);
                                    if (daemon(1, 1) != 0)
                                        return 1;
                                    record_many(storage, L"behind", 1000);
                                    storage->stop_recording();
                                    has_ended.send();
                                    return 0;
                                }),
                                0));
    has_ended.wait();
    EXPECT_EQ(types_in(), numbered_types(L"before", 100) + numbered_types(L"behind", 1000));
}

TEST_F(storage_fork_test, a_child_in_another_directory_records_at_the_relative_path_of_its_parent)
{
    std::filesystem::create_directory(m_folder.name("elsewhere"));
    const current_directory_scope_t directory(m_folder.name("."));
    const signal_t has_ended;
    status_of_child([&] {
        const storage_ptr_t storage = messages_storage_t::get(basekit2::path_t(L"log.xml"));
        storage->start_recording();
        record(storage, L"a");
        if (fork() == 0) {
            EXPECT_EQ(chdir("elsewhere"), 0);
            record(storage, L"b");
            storage->stop_recording();
            has_ended.send();
            _exit(0);
        }
        return 0;
    });
    has_ended.wait();
    EXPECT_EQ(types_in(), L"a;b;");
    EXPECT_FALSE(m_folder.has("elsewhere/log.xml"));
}

TEST_F(storage_fork_test, a_child_continues_from_the_state_of_its_killed_parent_at_the_fork)
{
    run(do_nothing, kill_self, record_b);
    EXPECT_EQ(m_folder.read("log.xml"), log_of(message_of("a") + message_of("b")));
}

TEST_F(storage_fork_test, a_child_continues_after_the_messages_of_its_killed_parent)
{
    run(
        do_nothing,
        [](const storage_ptr_t& storage) {
            record_many(storage, L"parent", 1000);
            kill_self(storage);
        },
        record_b);
    const std::wstring types = types_in();
    EXPECT_EQ(types.substr(types.size() - 2), L"b;");
    const std::wstring before = types.substr(0, types.size() - 2);
    EXPECT_GT(before.size(), numbered_types(L"parent", 900).size());
    EXPECT_EQ(before, (L"a;" + numbered_types(L"parent", 1000)).substr(0, before.size()));
}

TEST_F(storage_fork_test, a_child_continues_after_the_log_that_its_parent_closed)
{
    run(
        record_b,
        [](const storage_ptr_t& storage) {
            record(storage, L"parent");
            storage->stop_recording();
        },
        [](const storage_ptr_t& storage) { record(storage, L"c"); });
    EXPECT_EQ(types_in(), L"a;parent;b;c;");
}

TEST_F(storage_fork_test, a_child_writes_before_its_stop_when_its_parent_has_ended)
{
    run(record_b, kill_self, [this](const storage_ptr_t& storage) {
        record_many(storage, L"child", 1000);
        std::filesystem::copy_file(m_folder.name("log.xml"), m_folder.name("before the stop"));
    });
    const std::wstring types = types_in("before the stop");
    EXPECT_GT(types.size(), numbered_types(L"child", 900).size());
    EXPECT_EQ(types, (L"a;b;" + numbered_types(L"child", 1000)).substr(0, types.size()));
}

TEST_F(storage_fork_test, a_child_that_stops_waits_for_the_end_of_its_parent)
{
    const signal_t child_stops;
    const signal_t child_has_ended;
    const auto begin = std::chrono::steady_clock::now();
    status_of_child([&] {
        const storage_ptr_t storage = get();
        storage->start_recording();
        record(storage, L"a");
        if (fork() == 0) {
            record(storage, L"b");
            child_stops.send();
            storage->stop_recording();
            child_has_ended.send();
            _exit(0);
        }
        child_stops.wait();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return raise(SIGKILL);
    });
    child_has_ended.wait();
    EXPECT_EQ(types_in(), L"a;b;");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(storage_fork_test, a_child_begins_a_log_if_that_of_its_killed_parent_was_removed)
{
    run(
        record_b,
        [this](const storage_ptr_t& storage) {
            std::filesystem::remove(m_folder.name("log.xml"));
            kill_self(storage);
        },
        do_nothing);
    EXPECT_EQ(m_folder.read("log.xml"), log_of(message_of("b")));
}

TEST_F(storage_fork_test, a_child_without_messages_leaves_its_parents_log_alone)
{
    run(
        do_nothing,
        [this](const storage_ptr_t& storage) {
            storage->stop_recording();
            std::filesystem::remove(m_folder.name("log.xml"));
        },
        do_nothing);
    EXPECT_FALSE(m_folder.has("log.xml"));
}

TEST_F(storage_fork_test, messages_recorded_before_the_fork_outlive_both_processes)
{
    run(do_nothing, kill_self, do_nothing);
    EXPECT_EQ(types_in(), L"a;");
}

TEST_F(storage_fork_test, pending_messages_of_a_child_that_forks_are_recorded_once)
{
    run(record_b, kill_self, [](const storage_ptr_t& storage) {
        EXPECT_EQ(status_of_child([&] {
                      storage->stop_recording();
                      return 0;
                  }),
                  0);
        record(storage, L"c");
    });
    EXPECT_EQ(types_in(), L"a;b;c;");
}

TEST_F(storage_fork_test, a_child_waits_for_the_log_that_replaced_the_one_of_its_parent)
{
    run(
        record_b,
        [this](const storage_ptr_t& storage) {
            storage->stop_recording();
            std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.1"));
            storage->start_recording();
            record(storage, L"p");
            storage->stop_recording();
        },
        [](const storage_ptr_t& storage) { record(storage, L"c"); });
    EXPECT_EQ(types_in("log.1"), L"a;");
    EXPECT_EQ(types_in(), L"p;b;c;");
}

TEST_F(storage_fork_test, a_grandchild_continues_as_a_child_does)
{
    run(record_b, kill_self, [](const storage_ptr_t& storage) {
        const pid_t grandchild = fork();
        if (grandchild != 0)
            _exit(0);
        record(storage, L"c");
    });
    EXPECT_EQ(types_in(), L"a;b;c;");
}

TEST_F(storage_fork_test, a_grandchild_that_is_forked_while_all_processes_live_continues_too)
{
    run(
        [](const storage_ptr_t& /*storage*/) {
            if (fork() != 0)
                _exit(0);
        },
        kill_self, record_b);
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_fork_test, a_child_of_a_process_that_has_stopped_records_nothing)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    ASSERT_TRUE(storage->stop_recording());
    const int status = status_of_child([&] {
        record(storage, L"b");
        return storage->stop_recording() ? 0 : 1;
    });
    EXPECT_TRUE(has_exited_with(status, 0));
    EXPECT_EQ(types_in(), L"a;");
}

TEST_F(storage_fork_test, pending_messages_of_a_child_are_whole_and_limited)
{
    const std::wstring big(1048576, L'x');
    run(
        [&](const storage_ptr_t& storage) {
            for (int i = 0; i < 40; ++i)
                record(storage, big);
        },
        kill_self, record_b);
    const std::wstring types = types_in();
    EXPECT_EQ(types.substr(0, 2), L"a;");
    EXPECT_EQ(types.substr(types.size() - 3), L";b;");
    EXPECT_GT(types.size(), 14 * big.size());
    EXPECT_LT(types.size(), 17 * big.size());
}

TEST_F(storage_fork_test, a_child_continues_though_no_descriptor_was_free_at_the_fork)
{
    rlimit former = {};
    getrlimit(RLIMIT_NOFILE, &former);
    run([&](const storage_ptr_t& /*storage*/) { setrlimit(RLIMIT_NOFILE, &former); }, kill_self,
        record_b,
        [&] {
            const rlimit none = {0, former.rlim_max};
            setrlimit(RLIMIT_NOFILE, &none);
        });
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_fork_test, a_child_continues_after_a_start_without_a_free_descriptor)
{
    run(record_b, kill_self, [this](const storage_ptr_t& storage) {
        std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
        rlimit former = {};
        getrlimit(RLIMIT_NOFILE, &former);
        const int next = dup(STDERR_FILENO);
        close(next);
        const rlimit one = {static_cast<rlim_t>(next) + 1, former.rlim_max};
        setrlimit(RLIMIT_NOFILE, &one);
        record(storage, L"c"); // opens the log, but not the copy
        setrlimit(RLIMIT_NOFILE, &former);
        record(storage, L"d");
    });
    EXPECT_EQ(types_in(), L"a;b;c;d;");
}

TEST_F(storage_fork_test, a_process_created_without_the_fork_handlers_writes_nothing)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record_many(storage, L"parent", 300);
    const signal_t is_closed;
    const pid_t child = _Fork();
    if (child == 0) {
        is_closed.wait();
        record_many(storage, L"child", 300);
        storage->stop_recording();
        _exit(0);
    }
    EXPECT_TRUE(storage->stop_recording());
    is_closed.send();
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_EQ(types_in(), numbered_types(L"parent", 300));
}

TEST_F(storage_fork_test, a_fork_handler_may_use_a_storage)
{
    static storage_ptr_t storage;
    EXPECT_TRUE(has_exited_with(status_of_child([&] {
                                    storage = get();
                                    pthread_atfork([] { storage->stop_recording(); },
                                                   [] { storage->start_recording(); }, nullptr);
                                    storage->start_recording();
                                    record(storage, L"a");
                                    if (fork() == 0)
                                        _exit(0);
                                    record(storage, L"b");
                                    storage->stop_recording();
                                    return 0;
                                }),
                                0));
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_fork_test, a_message_handler_may_fork_during_a_replay)
{
    struct forking_handler_t : base_handler_t
    {
        using base_handler_t::on_message;
        bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t /*msg*/) override
        {
            EXPECT_TRUE(has_exited_with(status_of_child([] { return 0; }), 0));
            return true;
        }
    };
    record_all(L"ab");
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"storage_fork_test."), L"");
    ex->push_handler(boost::make_shared<forking_handler_t>());
    const storage_ptr_t storage = get();
    EXPECT_TRUE(storage->start_reading());
    EXPECT_TRUE(storage->replay(ex));
}

TEST_F(storage_fork_test,
       a_child_that_stays_alive_does_not_keep_the_log_of_its_killed_parent_locked)
{
    const storage_ptr_t storage = get();
    bool is_free = false;
    const signal_t is_forked;
    const signal_t may_end;
    EXPECT_TRUE(was_killed(status_of_child([&] {
        storage->start_recording();
        if (fork() == 0) {
            is_forked.send();
            may_end.wait();
            _exit(0);
        }
        is_forked.wait();
        return raise(SIGKILL);
    })));
    is_free = storage->start_recording();
    may_end.send();
    EXPECT_TRUE(is_free);
}

TEST_F(storage_fork_test, a_child_reads_and_delivers_as_its_parent_does)
{
    record_all(L"ab");
    const storage_ptr_t storage = get();
    EXPECT_TRUE(
        has_exited_with(status_of_child([&] { return replay(storage) == L"a;b;" ? 0 : 1; }), 0));
    EXPECT_EQ(replay(storage), L"a;b;");
}

TEST_F(storage_fork_test, a_child_whose_start_is_refused_does_not_retry_at_each_message)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    const signal_t is_refused;
    const pid_t child = fork();
    if (child == 0) {
        is_refused.wait();
        int calls = 0;
        const faults_scope_t count([&](const std::string& /*call*/, int /*descriptor*/) {
            ++calls;
            return 0;
        });
        record_many(storage, L"b", 1000);
        _exit(calls > 0 && calls < 1000 ? 0 : 1);
    }
    storage->stop_recording();
    record_all(L"c");
    m_folder.write("log.xml.tmp", foreign_log({"d"}));
    is_refused.send();
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(has_exited_with(status, 0));
}

// ---- a process that forks while other threads use storages

TEST_F(storage_fork_test, a_fork_writes_all_messages_while_another_thread_uses_the_storage)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    std::atomic<bool> is_over{false};
    const message_ptr_t unflagged = make_flagged(L"dropped", 0);
    std::thread other = repeat_until(is_over, [&] { storage->on_message(nullptr, unflagged); });
    for (int i = 0; i < 200; ++i) {
        record(storage, std::to_wstring(i));
        const std::string last = "<type>" + std::to_string(i) + "<";
        EXPECT_TRUE(has_exited_with(
            status_of_child(
                [&] { return m_folder.read("log.xml").find(last) != std::string::npos ? 0 : 1; }),
            0));
    }
    is_over = true;
    other.join();
}

TEST_F(storage_fork_test, a_child_records_though_other_threads_recorded_at_the_fork)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    std::atomic<bool> is_over{false};
    std::vector<std::thread> others;
    for (int i = 0; i < 4; ++i)
        others.push_back(repeat_until(is_over, [&] { record(storage, L"parent"); }));
    for (int i = 0; i < 50; ++i)
        EXPECT_TRUE(has_exited_with(status_of_child([&] {
                                        alarm(60);
                                        record(storage, L"child");
                                        return 0;
                                    }),
                                    0));
    is_over = true;
    for (std::thread& other : others)
        other.join();
}

TEST_F(storage_fork_test, a_child_gets_a_storage_though_another_thread_got_one_at_the_fork)
{
    std::atomic<bool> is_over{false};
    std::thread other = repeat_until(is_over, [&] { get("other.xml"); });
    for (int i = 0; i < 200; ++i)
        EXPECT_TRUE(has_exited_with(status_of_child([&] {
                                        alarm(60);
                                        return get() ? 0 : 1;
                                    }),
                                    0));
    is_over = true;
    other.join();
}

TEST_F(storage_fork_test,
       children_do_not_keep_a_log_that_another_thread_started_or_closed_at_the_fork)
{
    std::atomic<bool> is_over{false};
    std::thread other = repeat_until(is_over, [&] { get()->start_recording(); });
    std::vector<pid_t> children;
    for (int i = 0; i < 200; ++i) {
        children.push_back(fork());
        if (children.back() == 0) {
            alarm(60);
            pause();
        }
    }
    is_over = true;
    other.join();
    // The last child may not have closed the log yet.
    bool is_free = false;
    for (int i = 0; i < 100 && !is_free; ++i) {
        is_free = get()->start_recording();
        std::this_thread::sleep_for(std::chrono::milliseconds(is_free ? 0 : 10));
    }
    EXPECT_TRUE(is_free);
    for (const pid_t child : children) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
}

TEST_F(storage_fork_test, a_fork_does_not_wait_for_a_long_start_and_its_child_keeps_neither_lock)
{
    record_all(L"a");
    const signal_t may_end;
    EXPECT_TRUE(was_killed(status_of_child([&] {
        std::atomic<bool> is_starting{false};
        const faults_scope_t slow([&](const std::string& call, int) {
            if (call == "pread") {
                is_starting = true;
                std::this_thread::sleep_for(std::chrono::seconds(60));
            }
            return 0;
        });
        std::thread([this] { get()->start_recording(); }).detach();
        while (!is_starting)
            std::this_thread::yield();
        const signal_t is_usable;
        if (fork() == 0) {
            record(get(), L"child");
            get()->stop_recording();
            is_usable.send();
            may_end.wait();
            _exit(0);
        }
        is_usable.wait();
        return raise(SIGKILL);
    })));
    EXPECT_TRUE(get()->start_recording());
    may_end.send();
}

TEST_F(storage_fork_test, a_fork_does_not_change_errno)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    const auto fork_with_messages = [&] {
        record(storage, L"b");
        errno = EDOM;
        const pid_t child = fork();
        if (child == 0)
            _exit(errno == EDOM ? 0 : 1);
        if (errno != EDOM)
            return 1;
        int status = -1;
        waitpid(child, &status, 0);
        return WEXITSTATUS(status);
    };
    EXPECT_TRUE(has_exited_with(status_of_child(fork_with_messages), 0));
}

TEST_F(storage_fork_test, a_fork_of_a_child_waits_a_second_for_all_its_storages_together)
{
    std::vector<storage_ptr_t> storages;
    for (const char* const leaf : {"1.xml", "2.xml", "3.xml"}) {
        storages.push_back(get(leaf));
        ASSERT_TRUE(storages.back()->start_recording());
    }
    const auto fork_with_messages = [&] {
        for (const storage_ptr_t& storage : storages)
            record(storage, L"b");
        const auto begin = std::chrono::steady_clock::now();
        status_of_child([] { return 0; });
        return std::chrono::steady_clock::now() - begin < std::chrono::seconds(2) ? 0 : 1;
    };
    EXPECT_TRUE(has_exited_with(status_of_child(fork_with_messages), 0));
}
TEST_F(storage_fork_test, a_child_does_not_replay_while_its_parent_records)
{
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"storage_fork_test."), L"");
    const storage_ptr_t storage = get();
    record_all(L"a");
    ASSERT_TRUE(storage->start_recording());
    const int status = status_of_child([&] {
        const bool is_refused = storage->start_reading() && !storage->replay(ex);
        storage->stop_recording();
        return is_refused && storage->replay(ex) ? 0 : 1;
    });
    EXPECT_TRUE(has_exited_with(status, 0));
}

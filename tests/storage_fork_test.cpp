// A process forks while it records.

#include "process_support.h"
#include "storage_support.h"

#include <cstdlib>

using namespace velmoext_1_4_8;

namespace
{

typedef storage_test_t storage_fork_test;

} // namespace

TEST_F(storage_fork_test, a_child_that_lets_go_of_the_storage_leaves_the_recording_alone)
{
    storage_ptr storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    const int status = status_of_child([&] {
        record(storage, L"of the child");
        storage.reset();
        return 0;
    });
    EXPECT_TRUE(has_exited_with(status, 0));
    record(storage, L"b");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_fork_test, a_child_that_stops_the_recording_stops_only_its_own_part)
{
    const storage_ptr storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    const int status = status_of_child([&] { return storage->stop_recording() ? 0 : 1; });
    EXPECT_TRUE(has_exited_with(status, 0));
    EXPECT_FALSE(get("./log.xml")->start_recording()) << "the child took the lock away";
    record(storage, L"b");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_fork_test, a_child_that_records_much_tears_nothing)
{
    const storage_ptr storage = get();
    ASSERT_TRUE(storage->start_recording());
    std::wstring expected;
    const auto record_many = [&](const std::wstring& name) {
        for (int i = 0; i < 1000; ++i)
            record(storage, name + std::to_wstring(i));
    };
    record_many(L"before");
    EXPECT_TRUE(has_exited_with(status_of_child([&] {
                                    record_many(L"child");
                                    return 0;
                                }),
                                0));
    record_many(L"behind");
    EXPECT_TRUE(storage->stop_recording());
    for (const wchar_t* const name : {L"before", L"behind"})
        for (int i = 0; i < 1000; ++i)
            expected += name + std::to_wstring(i) + L";";
    EXPECT_EQ(types_in(), expected);
}

TEST_F(storage_fork_test, a_child_cannot_record_until_its_parent_has_stopped)
{
    const storage_ptr storage = get();
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

TEST_F(storage_fork_test, a_child_that_lives_on_does_not_keep_the_log)
{
    const auto stop_beside_a_child = [&] {
        const storage_ptr storage = get();
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

TEST_F(storage_fork_test, a_child_reads_and_delivers_as_its_parent_does)
{
    record_all(L"ab");
    const storage_ptr storage = get();
    EXPECT_TRUE(
        has_exited_with(status_of_child([&] { return replay(storage) == L"a;b;" ? 0 : 1; }), 0));
    EXPECT_EQ(replay(storage), L"a;b;");
}

// A log is followed while it is renamed, copied, truncated and removed.

#include "follower_support.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>

using namespace velmolog;

namespace
{

class rotated_logs_test : public follower_test_t
{
protected:
    /// Renames the log, if there is one, and creates another one with this text.
    void replace_log(const std::string& text)
    {
        m_folder.write("new.xml", text);
        if (std::filesystem::exists(log()))
            rename("log.xml", "log." + std::to_string(++m_renamed));
        rename("new.xml", "log.xml");
    }

    /// Waits until the process has this number of files of the folder open. Returns false after
    /// 20 seconds.
    bool has_open_files(const follower_process_t& follower, std::size_t count) const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (open_files(follower) != count) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return true;
    }

private:
    std::size_t open_files(const follower_process_t& follower) const
    {
        const std::string descriptors = "/proc/" + std::to_string(follower.process()) + "/fd";
        std::size_t count = 0;
        for (const auto& descriptor : std::filesystem::directory_iterator(descriptors)) {
            std::error_code error;
            const auto target = std::filesystem::read_symlink(descriptor.path(), error);
            const bool is_in_folder = target.string().find(m_folder.name("")) == 0;
            count += is_in_folder && std::filesystem::is_regular_file(target, error) ? 1 : 0;
        }
        return count;
    }

    int m_renamed = 0;
};

} // namespace

TEST_F(rotated_logs_test, a_renamed_log_is_read_to_its_end_before_the_new_one)
{
    record_all(L"a");
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    record_all(L"bc");
    rename("log.xml", "log.1");
    record_all(L"d");
    ASSERT_TRUE(follower.prints("d"));
    expect_lines_after_a_start(follower, {"a", "b", "c", "d"});
}

TEST_F(rotated_logs_test, a_renamed_log_is_read_as_long_as_it_is_recorded)
{
    const auto former = get();
    ASSERT_TRUE(former->start_recording());
    record(former, L"a");
    follower_process_t follower({log()});
    const auto end_of_chunk = [&] {
        for (int i = 0; i < 100; ++i)
            record(former, L"of_former");
    };
    end_of_chunk();
    ASSERT_TRUE(follower.prints("of_former"));
    rename("log.xml", "log.1");
    EXPECT_EQ(wait_for_end(run_program({RECORDER, log(), "1", "1", "stable"})), 0);
    ASSERT_TRUE(follower.prints("1"));
    record(former, L"b");
    ASSERT_TRUE(former->stop_recording());
    ASSERT_TRUE(follower.prints("b"));
    EXPECT_EQ(wait_for_end(run_program({RECORDER, log(), "2", "1", "stable"})), 0);
    ASSERT_TRUE(follower.prints("2"));
    EXPECT_EQ(std::count(follower.lines().begin(), follower.lines().end(), "of_former"), 100);
    EXPECT_EQ(follower.lines().size(), 104);
}

TEST_F(rotated_logs_test, a_message_at_the_end_of_a_renamed_log_that_is_not_complete_is_not_read)
{
    m_folder.write("log.xml", log_beginning + message_of("a") + " <msg>\n  <type>never");
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    rename("log.xml", "log.1");
    expect_lines_after_a_start(follower, {"a"});
}

TEST_F(rotated_logs_test, a_log_is_renamed_several_times)
{
    follower_process_t follower({log()});
    lines_t expected;
    for (char type = 'a'; type < 'k'; ++type) {
        record_all(std::wstring(1, type));
        expected.emplace_back(1, type);
        ASSERT_TRUE(follower.prints(expected.back()));
        rename("log.xml", "log." + std::to_string(type));
    }
    expect_lines_after_a_start(follower, expected);
}

TEST_F(rotated_logs_test, a_log_that_is_copied_and_truncated_is_read_as_a_new_one)
{
    record_all(L"ab");
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("b"));
    std::filesystem::copy_file(log(), m_folder.name("log.1"));
    std::filesystem::resize_file(log(), 0);
    record_all(L"c");
    ASSERT_TRUE(follower.prints("c"));
    expect_lines_after_a_start(follower, {"a", "b", "c"});
}

// The bytes differ: if they did not, and were replaced at once, nothing would have changed.
TEST_F(rotated_logs_test, a_new_log_with_the_same_messages_is_read)
{
    m_folder.write("log.xml", "<log>\n" + message_of("a") + message_of("b") + "</log>\n");
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("b"));
    std::filesystem::resize_file(log(), 0);
    record_all(L"abc");
    ASSERT_TRUE(follower.prints("c"));
    expect_lines_after_a_start(follower, {"a", "b", "a", "b", "c"});
}

TEST_F(rotated_logs_test, a_new_log_that_is_longer_is_read)
{
    record_all(L"ab");
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("b"));
    m_folder.write("log.xml", log_of(message_of("c") + message_of("d") + message_of("e")));
    ASSERT_TRUE(follower.prints("e"));
    expect_lines_after_a_start(follower, {"a", "b", "c", "d", "e"});
}

TEST_F(rotated_logs_test, a_recorder_that_continues_in_a_truncated_log_is_read)
{
    const auto storage = get();
    ASSERT_TRUE(storage->start_recording());
    for (int i = 0; i < 100; ++i)
        record(storage, L"a");
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    std::filesystem::copy_file(log(), m_folder.name("log.1"));
    std::filesystem::resize_file(log(), 0);
    for (int i = 0; i < 100; ++i)
        record(storage, L"b");
    record(storage, L"c");
    ASSERT_TRUE(storage->stop_recording());
    ASSERT_TRUE(follower.prints("c"));
    record_all(L"d");
    ASSERT_TRUE(follower.prints("d"));
    EXPECT_EQ(std::count(follower.lines().begin(), follower.lines().end(), "d"), 1);
    EXPECT_EQ(std::count(follower.lines().begin(), follower.lines().end(), "c"), 1);
    EXPECT_LE(std::count(follower.lines().begin(), follower.lines().end(), "b"), 100);
}

TEST_F(rotated_logs_test, a_log_that_is_removed_and_created_again_is_read)
{
    record_all(L"ab");
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("b"));
    std::filesystem::remove(log());
    record_all(L"c");
    ASSERT_TRUE(follower.prints("c"));
    expect_lines_after_a_start(follower, {"a", "b", "c"});
}

TEST_F(rotated_logs_test, the_end_of_a_removed_log_is_read)
{
    const auto storage = get();
    ASSERT_TRUE(storage->start_recording());
    for (int i = 0; i < 100; ++i)
        record(storage, L"a");
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    std::filesystem::remove(log());
    record(storage, L"b");
    ASSERT_TRUE(storage->stop_recording());
    EXPECT_TRUE(follower.prints("b"));
}

TEST_F(rotated_logs_test, a_link_that_leads_to_another_log_is_followed)
{
    record_all(L"a", "one.xml");
    record_all(L"b", "two.xml");
    std::filesystem::create_symlink("one.xml", log());
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    std::filesystem::create_symlink("two.xml", m_folder.name("link"));
    rename("link", "log.xml");
    ASSERT_TRUE(follower.prints("b"));
    EXPECT_EQ(follower.lines(), (lines_t{"a", "b"}));
}

TEST_F(rotated_logs_test, a_log_is_followed_without_events)
{
    setenv("VELMOLOG_WITHOUT_EVENTS", "1", 1);
    follower_process_t follower({log()});
    unsetenv("VELMOLOG_WITHOUT_EVENTS");
    record_all(L"a");
    ASSERT_TRUE(follower.prints("a"));
    rename("log.xml", "log.1");
    record_all(L"b");
    ASSERT_TRUE(follower.prints("b"));
    std::filesystem::resize_file(log(), 0);
    record_all(L"c");
    ASSERT_TRUE(follower.prints("c"));
    expect_lines_after_a_start(follower, {"a", "b", "c"});
}

TEST_F(rotated_logs_test, only_the_last_files_are_open)
{
    follower_process_t follower({log()});
    for (int i = 0; i != 9; ++i) {
        const std::string type = "type_" + std::to_string(i);
        replace_log(log_beginning + message_of(type));
        ASSERT_TRUE(follower.prints(type));
    }
    EXPECT_TRUE(has_open_files(follower, 5));
}

TEST_F(rotated_logs_test, a_complete_file_is_closed_when_there_is_another_one)
{
    follower_process_t follower({log()});
    for (const char* const type : {"a", "b", "c"}) {
        replace_log(log_beginning + message_of(type) + "</log>\n");
        ASSERT_TRUE(follower.prints(type));
    }
    EXPECT_TRUE(has_open_files(follower, 1));
}

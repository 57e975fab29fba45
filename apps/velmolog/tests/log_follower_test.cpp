// A log is followed while it is recorded.

#include "follower_support.h"

#include <sys/stat.h>

#include <chrono>
#include <thread>

using namespace velmolog;

namespace
{

class log_follower_test : public follower_test_t
{};

} // namespace

TEST_F(log_follower_test, messages_that_are_there_and_that_are_appended_are_read)
{
    m_folder.write("log.xml", log_beginning + message_of("a") + message_of("b"));
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("b"));
    append(message_of("c"));
    ASSERT_TRUE(follower.prints("c"));
    expect_lines(follower, {"a", "b", "c"});
}

TEST_F(log_follower_test, a_message_is_read_when_its_last_byte_is_appended)
{
    const std::string text = log_beginning + message_of("a");
    const std::string message = message_of("b");
    m_folder.write("log.xml", text);
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    for (const char byte : message)
        append(std::string(1, byte));
    expect_lines(follower, {"a", "b"});
}

TEST_F(log_follower_test, recordings_one_after_the_other_are_read)
{
    record_all(L"ab");
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("b"));
    record_all(L"c");
    record_all(L"");
    ASSERT_TRUE(follower.prints("c"));
    record_all(L"de");
    ASSERT_TRUE(follower.prints("e"));
    expect_lines_after_a_start(follower, {"a", "b", "c", "d", "e"});
}

TEST_F(log_follower_test, a_message_that_a_start_cuts_off_is_not_read)
{
    const std::string begun = message_of("never_complete");
    for (std::size_t size = 1; size < begun.size() - 1; size += 7) {
        m_folder.write("log.xml", log_beginning + message_of("a"));
        follower_process_t follower({log()});
        ASSERT_TRUE(follower.prints("a"));
        append(begun.substr(0, size));
        append("");
        expect_lines_after_a_start(follower, {"a"});
        std::filesystem::remove(log());
    }
}

TEST_F(log_follower_test, half_read_bytes_do_not_become_a_part_of_a_message)
{
    // The first half has been read when it is replaced, by as many bytes.
    const std::string text = log_beginning + message_of("a");
    const std::string half = " <msg>\n  <type>wro";
    m_folder.write("log.xml", text + half);
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    append(" ");
    std::filesystem::resize_file(log(), text.size());
    append(message_of("b"));
    expect_lines(follower, {"a", "b"});
}

TEST_F(log_follower_test, a_missing_log_is_waited_for)
{
    follower_process_t follower({log()});
    record_all(L"ab");
    ASSERT_TRUE(follower.prints("b"));
    expect_lines_after_a_start(follower, {"a", "b"});
}

TEST_F(log_follower_test, a_missing_folder_is_waited_for)
{
    follower_process_t follower({m_folder.name("later/log.xml")});
    std::filesystem::create_directory(m_folder.name("later"));
    record_all(L"ab", "later/log.xml");
    EXPECT_TRUE(follower.prints("b"));
}

TEST_F(log_follower_test, a_folder_that_is_created_again_is_followed)
{
    std::filesystem::create_directory(m_folder.name("folder"));
    record_all(L"a", "folder/log.xml");
    follower_process_t follower({m_folder.name("folder/log.xml")});
    ASSERT_TRUE(follower.prints("a"));
    rename("folder", "former");
    std::filesystem::create_directory(m_folder.name("folder"));
    record_all(L"b", "folder/log.xml");
    EXPECT_TRUE(follower.prints("b"));
}

TEST_F(log_follower_test, what_is_not_a_regular_file_is_not_opened)
{
    ASSERT_EQ(mkfifo(log().c_str(), 0600), 0);
    follower_process_t follower({log()});
    m_folder.write("other.xml", log_of(message_of("a")));
    rename("other.xml", "log.xml");
    EXPECT_TRUE(follower.prints("a"));
}

TEST_F(log_follower_test, several_logs_are_followed_each_in_its_order)
{
    record_all(L"ab", "one.xml");
    follower_process_t follower({m_folder.name("one.xml"), m_folder.name("two.xml")});
    ASSERT_TRUE(follower.prints("one.xml b"));
    record_all(L"cd", "two.xml");
    ASSERT_TRUE(follower.prints("two.xml d"));
    record_all(L"e", "one.xml");
    ASSERT_TRUE(follower.prints("one.xml e"));
    const lines_t expected = {"one.xml a", "one.xml b", "two.xml c", "two.xml d", "one.xml e"};
    EXPECT_EQ(follower.lines(), expected);
}

TEST_F(log_follower_test, one_log_named_twice_is_read_twice)
{
    record_all(L"a");
    follower_process_t follower({log(), log()});
    ASSERT_TRUE(follower.prints("log.xml a"));
    record_all(L"b");
    ASSERT_TRUE(follower.prints("log.xml b"));
    follower.end();
    EXPECT_EQ(follower.lines().size(), 4);
}

TEST_F(log_follower_test, the_callback_ends_the_following)
{
    record_all(L"abc");
    follower_process_t follower({"-2", log()});
    const int status = follower.end(0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_EQ(follower.lines(), (lines_t{"a", "b"}));
}

TEST_F(log_follower_test, a_signal_ends_the_following_in_order)
{
    record_all(L"ab");
    for (const int signal : {SIGINT, SIGTERM}) {
        follower_process_t follower({log()});
        ASSERT_TRUE(follower.prints("b"));
        const int status = follower.end(signal);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
        EXPECT_EQ(follower.lines(), (lines_t{"a", "b"}));
    }
}

TEST_F(log_follower_test, a_signal_ends_the_reading_of_a_long_log)
{
    std::string text = log_beginning;
    while (text.size() < 30000000)
        text += message_of("a");
    m_folder.write("log.xml", text);
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    const int status = follower.end();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_LT(follower.lines().size(), text.size() / message_of("a").size());
}

TEST_F(log_follower_test, a_message_is_read_within_a_tenth_of_a_second)
{
    record_all(L"a");
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    int late = 0;
    for (int number = 0; number < 20; ++number) {
        append(message_of(std::to_string(number)));
        late += follower.prints(std::to_string(number), std::chrono::milliseconds(100)) ? 0 : 1;
        ASSERT_TRUE(follower.prints(std::to_string(number)));
    }
    EXPECT_LE(late, 2) << "for a busy machine";
}

TEST_F(log_follower_test, nothing_is_done_while_nothing_changes)
{
    record_all(L"a");
    follower_process_t follower({log(), m_folder.name("missing.xml"), "/missing/log.xml"});
    ASSERT_TRUE(follower.prints("log.xml a"));
    EXPECT_FALSE(follower.prints("anything else", std::chrono::milliseconds(2500)));
    follower.end();
    EXPECT_LT(follower.seconds(), 0.5);
}

TEST_F(log_follower_test, a_long_message_that_grows_slowly_does_not_take_all_the_time)
{
    m_folder.write("log.xml", log_beginning + message_of("a"));
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    std::ofstream file(log(), std::ios::binary | std::ios::app);
    file << " <msg>\n  <arg name=\"text\">" << std::string(8000000, 'x') << std::flush;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 2000; ++i) {
        file << "xxxx" << std::flush;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    file << "</arg>\n  <type>b</type>\n </msg>\n" << std::flush;
    ASSERT_TRUE(follower.prints("b"));
    follower.end();
    EXPECT_LT(follower.seconds(), time.count() / 3);
}

TEST_F(log_follower_test, an_end_that_is_replaced_by_a_shorter_text_does_not_stop_the_reading)
{
    const std::string text = log_beginning + message_of("a");
    m_folder.write("log.xml", text + " <msg>\n  <arg name=\"text\">" + std::string(1000000, 'x'));
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("a"));
    record_all(L"bc");
    ASSERT_TRUE(follower.prints("c"));
    expect_lines_after_a_start(follower, {"a", "b", "c"});
}

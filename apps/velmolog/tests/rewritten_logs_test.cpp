// A log is followed while a recorder's start rewrites it.

#include "follower_support.h"

#include "message_count.h"

using namespace velmolog;

namespace
{

class rewritten_logs_test : public follower_test_t
{
protected:
    // Follows the log, has it rewritten, and expects that the messages are read once.
    void expect_once(const std::string& text, const lines_t& lines) const
    {
        m_folder.write("log.xml", text);
        follower_process_t follower({log()});
        ASSERT_TRUE(follower.prints(lines.back()));
        expect_lines_after_a_start(follower, lines);
        EXPECT_FALSE(m_folder.has("log.xml.tmp"));
    }
};

const std::string unstable_message =
    " <msg>\n  <arg name=\"text\">a &amp; b</arg>\n  <type>unstable</type>\n </msg>\n";

} // namespace

TEST_F(rewritten_logs_test, messages_of_a_foreign_log_are_read_once)
{
    expect_once(foreign_log({"a", "b", "c"}), {"a", "b", "c"});
}

TEST_F(rewritten_logs_test, messages_with_texts_that_change_are_read_once)
{
    expect_once(log_of(message_of("a") + unstable_message + message_of("b")),
                {"a", "unstable", "b"});
}

TEST_F(rewritten_logs_test, lines_with_carriage_returns_are_read_once)
{
    expect_once("<log>\r\n<msg>\r\n<type>a</type>\r\n</msg>\r\n<msg><type>b</type></msg></log>\r\n",
                {"a", "b"});
}

TEST_F(rewritten_logs_test, messages_in_another_encoding_are_read_once)
{
    expect_once("<?xml version='1.0' encoding='ISO-8859-1'?>\n<log><msg><type>\xE9</type></msg>"
                "<msg><type>a</type></msg></log>",
                {"\xC3\xA9", "a"});
}

TEST_F(rewritten_logs_test, messages_that_are_not_carried_over_do_not_count)
{
    expect_once("<log><msg><type>a</type></msg><msg><arg name='n'>1</arg></msg><msg/>"
                "<msg><type>b&lt;</type></msg><msg><type>c</type></msg></log>",
                {"a", "", "", "b<", "c"});
}

TEST_F(rewritten_logs_test, messages_after_damage_do_not_count)
{
    expect_once("<log><msg><type>a</type></msg>&damage;<msg><type>b</type></msg></log>",
                {"a", "b"});
}

TEST_F(rewritten_logs_test, a_log_that_a_start_cuts_before_damage_is_not_read_again)
{
    expect_once(log_of(message_of("a") + "&damage;\n" + message_of("b")), {"a", "b"});
}

TEST_F(rewritten_logs_test, a_file_that_is_not_a_log_is_read_when_it_is_one)
{
    m_folder.write("log.xml", "not a log <at all> &");
    follower_process_t follower({log()});
    expect_lines_after_a_start(follower, {});
}

TEST_F(rewritten_logs_test, a_second_rewriting_is_followed)
{
    m_folder.write("log.xml", foreign_log({"a", "b"}));
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("b"));
    record_all(L"c");
    ASSERT_TRUE(follower.prints("c"));
    const std::string text = m_folder.read("log.xml");
    std::filesystem::resize_file(log(), text.size() - std::string("</log>\n").size());
    append(unstable_message);
    ASSERT_TRUE(follower.prints("unstable"));
    record_all(L"d");
    ASSERT_TRUE(follower.prints("d"));
    expect_lines_after_a_start(follower, {"a", "b", "c", "unstable", "d"});
}

TEST_F(rewritten_logs_test, a_log_that_is_written_from_a_copy_that_was_left_is_not_read_again)
{
    m_folder.write("log.xml", foreign_log({"a", "b", "c"}));
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("c"));
    m_folder.write("log.xml.tmp", m_folder.read("log.xml"));
    std::filesystem::resize_file(log(), 0);
    expect_lines_after_a_start(follower, {"a", "b", "c"});
}

TEST_F(rewritten_logs_test, a_log_that_is_created_from_a_copy_that_was_left_is_not_read_again)
{
    m_folder.write("log.xml", foreign_log({"a", "b", "c"}));
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("c"));
    m_folder.write("log.xml.tmp", m_folder.read("log.xml"));
    std::filesystem::remove(log());
    expect_lines_after_a_start(follower, {"a", "b", "c"});
}

TEST_F(rewritten_logs_test, a_long_log_is_read_once_while_it_is_rewritten)
{
    std::vector<std::string> types;
    for (int i = 0; i < 30000; ++i)
        types.push_back(std::to_string(i));
    expect_once(foreign_log(types), types);
}

TEST_F(rewritten_logs_test, the_copy_of_a_log_that_is_named_by_a_link_is_noticed)
{
    std::filesystem::create_directory(m_folder.name("elsewhere"));
    std::filesystem::create_symlink("elsewhere/log.xml", log());
    m_folder.write("elsewhere/log.xml", foreign_log({"a", "b"}));
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("b"));
    record_all(L"c", "elsewhere/log.xml");
    ASSERT_TRUE(follower.prints("c"));
    record_all(L"d");
    ASSERT_TRUE(follower.prints("d"));
    EXPECT_EQ(follower.lines(), (lines_t{"a", "b", "c", "d"}));
}

TEST_F(rewritten_logs_test, a_rewriting_is_noticed_by_its_messages_without_events)
{
    setenv("VELMOLOG_WITHOUT_EVENTS", "1", 1);
    m_folder.write("log.xml", foreign_log({"a", "b"}));
    follower_process_t follower({log()});
    unsetenv("VELMOLOG_WITHOUT_EVENTS");
    ASSERT_TRUE(follower.prints("b"));
    expect_lines_after_a_start(follower, {"a", "b"});
}

TEST_F(rewritten_logs_test, the_count_of_messages_that_are_carried_over_is_that_of_a_start)
{
    int logs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(LOGS)) {
        const std::string name = entry.path().stem();
        // A start reads nothing after a zero byte in a comment, and replaces unknown entities if a
        // document type elsewhere may declare them.
        if (entry.path().extension() != ".xml" || name == "zero_byte" ||
            name == "document_type_elsewhere")
            continue;
        std::filesystem::remove(log());
        std::filesystem::copy_file(entry.path(), log());
        std::filesystem::permissions(log(), std::filesystem::perms::owner_all);
        velmoext_1_4_8::log_reader_t reader(basekit2::path_t(m_folder.wide_name("log.xml")));
        message_count_t count;
        typedef velmoext_1_4_8::log_reader_t::result_t result_t;
        for (result_t result = reader.next();
             result == result_t::message || result == result_t::damage; result = reader.next())
            result == result_t::message ? count.add(reader) : count.add_damage();
        record_all(L"");
        velmoext_1_4_8::log_reader_t carried(basekit2::path_t(m_folder.wide_name("log.xml")));
        std::uint64_t carried_count = 0;
        while (carried.next() == result_t::message)
            ++carried_count;
        EXPECT_EQ(count.carried(), carried_count) << entry.path();
        ++logs;
    }
    EXPECT_GT(logs, 40);
}

TEST_F(rewritten_logs_test, a_foreign_log_that_takes_the_name_is_read_from_its_beginning)
{
    m_folder.write("log.xml", foreign_log({"a", "b"}));
    follower_process_t follower({log()});
    ASSERT_TRUE(follower.prints("b"));
    m_folder.write("new.xml", foreign_log({"c", "d"}));
    kill(follower.process(), SIGSTOP);
    rename("log.xml", "log.1");
    rename("new.xml", "log.xml");
    record_all(L"e");
    kill(follower.process(), SIGCONT);
    ASSERT_TRUE(follower.prints("e"));
    expect_lines_after_a_start(follower, {"a", "b", "c", "d", "e"});
}

TEST_F(rewritten_logs_test, a_rewriting_without_events_is_noticed_after_messages_that_were_appended)
{
    setenv("VELMOLOG_WITHOUT_EVENTS", "1", 1);
    m_folder.write("log.xml", foreign_log({"a", "b"}));
    follower_process_t follower({log()});
    unsetenv("VELMOLOG_WITHOUT_EVENTS");
    ASSERT_TRUE(follower.prints("b"));
    m_folder.write("log.xml", foreign_log({"a", "b", "c"}));
    ASSERT_TRUE(follower.prints("c"));
    expect_lines_after_a_start(follower, {"a", "b", "c"});
}

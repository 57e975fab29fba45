#include "descriptor.h"
#include "log_support.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <string>

namespace audit
{
namespace
{

const char unreadable[] = "replayed: it is not a readable regular file";
const char without_message[] = "replayed: it contains no message";

class replay_test : public log_test_t
{
protected:
    result_t run_replay(const std::string& log, const launch_t& launch = launch_t()) const
    {
        return run_audit({"--replay", log, "--severity", "info"}, launch);
    }
};

TEST_F(replay_test, only_messages_of_the_chosen_severity_and_above_are_printed)
{
    make_findings();
    record();
    const struct
    {
        const char* severity;
        std::size_t lines;
    } cases[] = {{"info", 5}, {"warning", 4}, {"error", 3}, {"critical", 2}};
    for (const auto& given : cases)
        EXPECT_EQ(replay(given.severity).size(), given.lines) << given.severity;
    EXPECT_EQ(lines_of_run({"--replay", m_log}), replay("warning"));
}

TEST_F(replay_test, a_replay_does_not_change_the_log)
{
    make_findings();
    record();
    const std::string log = read_log();
    EXPECT_EQ(replay(), replay());
    EXPECT_EQ(read_log(), log);
}

TEST_F(replay_test, a_severity_may_hide_all_messages_of_a_log)
{
    record();
    EXPECT_EQ(replay("critical"), lines_t{});
}

TEST_F(replay_test, counts_are_printed_on_request)
{
    make_findings();
    record();
    const result_t result = run_audit({"--replay", m_log, "--progress"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.err, "audit: 5 messages were replayed, 4 were shown\n");
}

TEST_F(replay_test, a_log_that_is_not_a_readable_file_is_refused_at_once)
{
    m_folder.make_directory("directory");
    m_folder.make_fifo("fifo");
    for (const std::string& log : {m_folder.path("none"), m_folder.path("directory"),
                                   m_folder.path("fifo"), std::string("/dev/zero"), std::string()})
        expect_refusal(run_replay(log), log, unreadable);
}

TEST_F(replay_test, a_log_without_read_permission_is_refused)
{
    record();
    m_folder.set_mode("log.xml", 0200);
    launch_t launch;
    launch.is_privileged = false;
    expect_refusal(run_replay(m_log, launch), m_log, unreadable);
}

TEST_F(replay_test, a_file_without_a_message_is_refused)
{
    for (const char* const text :
         {"", "plain text\n", "a > b\n", "<log/>\n", "<?xml version=\"1.0\"?>\n<log>\n</log>\n",
          "<log><msg tool=\"audit\"><type>cut", "<other/>"}) {
        write_log(text);
        expect_refusal(run_replay(m_log), m_log, without_message);
    }
}

TEST_F(replay_test, a_truncated_log_replays_its_complete_messages)
{
    make_findings();
    record();
    const lines_t lines = replay();
    const std::string log = read_log();
    write_log(log.substr(0, log.rfind("<type>")));
    EXPECT_EQ(replay(), lines_t(lines.begin(), lines.end() - 1));
}

// These are limits of the library's log, which the program does not change.
TEST_F(replay_test, a_value_with_xml_escapes_is_replayed_changed_and_in_parts)
{
    m_tree.make_link("a&b", "x");
    const std::string path = m_tree.path();
    EXPECT_EQ(record("warning")[0], "warning link_dangling audit path=" + path + "/a&b target=x");
    EXPECT_EQ(replay("warning")[0],
              "warning link_dangling audit \"\"=& path=" + path + "/a&amp;b target=x");
}

TEST_F(replay_test, an_interrupt_ends_a_replay_at_once)
{
    m_tree.make_empty_files(600);
    record();
    narrow_pipe_t pipe;
    launch_t launch;
    launch.out = pipe.writer.get();
    audit_process_t process({"--replay", m_log, "--severity", "info"}, launch);
    char first = 0;
    ASSERT_EQ(::read(pipe.reader.get(), &first, 1), 1);
    process.interrupt();
    EXPECT_EQ(process.finish().exit_code, -SIGINT);
}

TEST_F(replay_test, a_full_device_exits_with_3)
{
    record();
    const descriptor_t full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    launch_t launch;
    launch.out = full.get();
    const result_t result = run_replay(m_log, launch);
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_EQ(result.err, "audit: standard output cannot be written: No space left on device\n");
}

} // namespace
} // namespace audit

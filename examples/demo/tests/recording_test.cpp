#include "descriptor.h"
#include "log_support.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <string>

namespace audit
{
namespace
{

bool is_about_seen_file(const std::string& line)
{
    return line.compare(0, 15, "info file_seen ") == 0;
}

lines_t twice(lines_t lines)
{
    const lines_t again = lines;
    lines.insert(lines.end(), again.begin(), again.end());
    return lines;
}

class recording_test : public log_test_t
{
protected:
    result_t run_with_log(const std::string& log, const launch_t& launch = launch_t()) const
    {
        return run_audit({"--severity", "info", "--log", log, m_tree.path()}, launch);
    }

    void expect_unrecordable(const result_t& result, const std::string& log) const
    {
        expect_refusal(
            result, log,
            "recorded into: it is not a writable regular file, or another process records "
            "into it, or its contents cannot be carried over");
    }

    /// Whether the log has its end, so that its next reader gets all of it.
    bool is_closed() const
    {
        const std::string log = read_log();
        const std::string end = "</log>\n";
        return log.size() > end.size() &&
               log.compare(log.size() - end.size(), end.size(), end) == 0;
    }
};

TEST_F(recording_test, findings_are_recorded_and_files_without_findings_are_not)
{
    make_findings();
    lines_t walked = record();
    EXPECT_EQ(walked.size(), 8U);
    walked.erase(std::remove_if(walked.begin(), walked.end(), is_about_seen_file), walked.end());
    EXPECT_EQ(walked.size(), 5U);
    EXPECT_EQ(replay(), walked);
    EXPECT_EQ(read_log().find("file_seen"), std::string::npos);
    EXPECT_TRUE(is_closed());
}

TEST_F(recording_test, a_walk_prints_the_same_with_a_log_as_without)
{
    make_findings();
    EXPECT_EQ(record(), lines_of_run({"--severity", "info", m_tree.path()}));
}

TEST_F(recording_test, the_printed_severity_does_not_affect_the_recording)
{
    make_findings();
    EXPECT_EQ(record("critical").size(), 2U);
    EXPECT_EQ(replay().size(), 5U);
}

TEST_F(recording_test, a_second_walk_appends_its_messages_to_those_of_the_first)
{
    make_findings();
    record();
    const lines_t first = replay();
    record();
    EXPECT_EQ(replay(), twice(first));
    EXPECT_TRUE(is_closed());
}

TEST_F(recording_test, a_log_is_private_to_its_owner_and_the_only_file_in_its_folder)
{
    record();
    record();
    const lines_t lines = lines_of_run({"--severity", "info", m_folder.path()});
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].compare(0, 31, "info file_seen audit mode=0600 "), 0) << lines[0];
}

TEST_F(recording_test, a_log_within_the_tree_is_a_file_like_any_other)
{
    const std::string log = m_tree.path("log");
    EXPECT_EQ(run_with_log(log).exit_code, 0);
    EXPECT_EQ(run_with_log(log).exit_code, 0);
    EXPECT_GE(lines_of_run({"--replay", log, "--severity", "info"}).size(), 2U);
}

TEST_F(recording_test, a_log_name_may_have_non_ascii_characters)
{
    const std::string log = m_folder.path("\xc3\xa4\xf0\x9f\x98\x80");
    EXPECT_EQ(run_with_log(log).exit_code, 0);
    EXPECT_EQ(lines_of_run({"--replay", log, "--severity", "info"}).size(), 1U);
}

TEST_F(recording_test, a_log_that_cannot_be_created_is_refused)
{
    for (const std::string& log :
         {m_folder.path("none/log"), m_folder.path("none/"), std::string()})
        expect_unrecordable(run_with_log(log), log);
}

TEST_F(recording_test, a_log_that_is_not_a_regular_file_is_refused_at_once)
{
    m_folder.make_directory("directory");
    m_folder.make_fifo("fifo");
    for (const std::string& log :
         {m_folder.path("directory"), m_folder.path("fifo"), std::string("/dev/null")})
        expect_unrecordable(run_with_log(log), log);
}

TEST_F(recording_test, a_log_without_write_permission_is_refused)
{
    record();
    m_folder.set_mode("log.xml", 0400);
    launch_t launch;
    launch.is_privileged = false;
    expect_unrecordable(run_with_log(m_log, launch), m_log);
    EXPECT_EQ(replay().size(), 1U);
}

TEST_F(recording_test, a_log_locked_by_another_process_is_refused_and_left_alone)
{
    record();
    const std::string log = read_log();
    const descriptor_t held(::open(m_log.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(held.get(), LOCK_EX | LOCK_NB), 0);
    expect_unrecordable(run_with_log(m_log), m_log);
    EXPECT_EQ(read_log(), log);
}

TEST_F(recording_test, nothing_is_walked_if_nothing_can_be_recorded)
{
    const std::string log = m_folder.path();
    expect_unrecordable(run_audit({"--log", log, m_tree.path("none")}), log);
}

TEST_F(recording_test, a_directory_that_cannot_be_read_leaves_the_log_s_messages)
{
    record();
    const lines_t lines = replay();
    const std::string none = m_tree.path("none");
    expect_refusal(run_audit({"--log", m_log, none}), none, "read: No such file or directory");
    EXPECT_EQ(replay(), lines);
    EXPECT_TRUE(is_closed());
}

TEST_F(recording_test, an_interrupted_walk_closes_its_log)
{
    m_tree.make_empty_files(600);
    const interrupted_run_t walk({"--severity", "info", "--log", m_log, m_tree.path()});
    EXPECT_EQ(walk.result.exit_code, 130);
    EXPECT_TRUE(is_closed());
    const lines_t lines = replay();
    EXPECT_LT(lines.size(), 601U);
    EXPECT_EQ(lines.back(), walk.lines.back());
    EXPECT_NE(lines.back().find(" complete=no "), std::string::npos) << lines.back();
}

TEST_F(recording_test, a_walk_that_cannot_print_closes_its_log)
{
    m_tree.make_empty_files(600);
    const descriptor_t full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    launch_t launch;
    launch.out = full.get();
    EXPECT_EQ(run_with_log(m_log, launch).exit_code, 3);
    EXPECT_TRUE(is_closed());
    EXPECT_GE(replay().size(), 2U);
}

} // namespace
} // namespace audit

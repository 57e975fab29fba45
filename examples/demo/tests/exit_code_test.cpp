#include "audit_process.h"
#include "scratch_tree.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

namespace audit
{
namespace
{

/// Whether the text is one whole line of this program.
testing::AssertionResult is_one_line(const std::string& text)
{
    const bool is_match = text.compare(0, 7, "audit: ") == 0 && text.find('\n') == text.size() - 1;
    return is_match ? testing::AssertionSuccess() : testing::AssertionFailure() << text;
}

void expect_failure(const result_t& result, int exit_code, const std::string& message)
{
    EXPECT_EQ(result.exit_code, exit_code);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "audit: " + message + '\n');
}

descriptor_t open_full_device()
{
    return descriptor_t(::open("/dev/full", O_WRONLY | O_CLOEXEC));
}

class exit_code_test : public testing::Test
{
protected:
    /// Their lines, two for each file, do not fit into a narrow pipe and the program's own buffer.
    void make_many_files() const { m_tree.make_empty_files(many); }

    static constexpr int many = 600;
    static constexpr std::size_t lines_of_many = 2 * many + 1;

    const scratch_tree_t m_tree;
};

TEST_F(exit_code_test, a_complete_walk_succeeds_with_any_findings)
{
    m_tree.make_link("gone", "nowhere");
    const result_t result = run_audit({m_tree.path()});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(lines_of(result.out).size(), 2U);
    EXPECT_EQ(result.err, "");
}

TEST_F(exit_code_test, help_goes_to_standard_output)
{
    const result_t result = run_audit({"--help"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out.compare(0, 12, "Usage: audit"), 0) << result.out;
    EXPECT_EQ(result.err, "");
}

TEST_F(exit_code_test, the_version_is_one_line)
{
    const result_t result = run_audit({"--version"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(lines_of(result.out).size(), 1U);
    EXPECT_EQ(result.err, "");
}

TEST_F(exit_code_test, wrong_usage_exits_with_1_and_one_line_that_names_help)
{
    const std::vector<std::string> cases[] = {{"--bogus"},
                                              {"-x"},
                                              {"--severity"},
                                              {"--severity", "x"},
                                              {"a", "b"},
                                              {"--log"},
                                              {"--log", "a\xff"},
                                              {"--replay", "a", "b"},
                                              {"--replay", "a", "--log", "b"},
                                              {"--large", "\n1\n"},
                                              {"--\n"}};
    for (const auto& arguments : cases) {
        const result_t result = run_audit(arguments);
        EXPECT_EQ(result.exit_code, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(is_one_line(result.err));
        EXPECT_NE(result.err.find("--help"), std::string::npos) << result.err;
    }
}

TEST_F(exit_code_test, a_missing_directory_exits_with_2)
{
    expect_failure(run_audit({m_tree.path("none")}), 2,
                   "'" + m_tree.path("none") + "' cannot be read: No such file or directory");
    expect_failure(run_audit({""}), 2, "'' cannot be read: No such file or directory");
}

TEST_F(exit_code_test, a_path_that_is_not_a_directory_exits_with_2)
{
    m_tree.make_file("file");
    m_tree.make_fifo("fifo");
    for (const char* const name : {"file", "fifo"})
        expect_failure(run_audit({m_tree.path(name)}), 2,
                       "'" + m_tree.path(name) + "' cannot be read: Not a directory");
}

TEST_F(exit_code_test, an_unreadable_directory_exits_with_2)
{
    m_tree.make_directory("closed");
    m_tree.set_mode("closed", 0);
    launch_t launch;
    launch.is_privileged = false;
    expect_failure(run_audit({m_tree.path("closed")}, launch), 2,
                   "'" + m_tree.path("closed") + "' cannot be read: Permission denied");
}

TEST_F(exit_code_test, a_directory_name_is_escaped_in_the_error_line)
{
    expect_failure(run_audit({"/a\nb\x1b[31m"}), 2,
                   R"('/a\x0ab\x1b[31m' cannot be read: No such file or directory)");
}

TEST_F(exit_code_test, a_full_device_exits_with_3)
{
    m_tree.make_file("a");
    const descriptor_t full = open_full_device();
    launch_t launch;
    launch.out = full.get();
    for (const auto& arguments :
         {std::vector<std::string>{"--severity", "info", m_tree.path()},
          std::vector<std::string>{"--help"}, std::vector<std::string>{"--version"}})
        expect_failure(run_audit(arguments, launch), 3,
                       "standard output cannot be written: No space left on device");
}

TEST_F(exit_code_test, a_full_device_ends_a_long_walk_early)
{
    make_many_files();
    const descriptor_t full = open_full_device();
    launch_t launch;
    launch.out = full.get();
    const result_t result = run_audit({"--severity", "info", "--progress", m_tree.path()}, launch);
    EXPECT_EQ(result.exit_code, 3);
    EXPECT_EQ(result.err.find("100 %"), std::string::npos);
}

TEST_F(exit_code_test, a_full_device_does_not_matter_if_nothing_is_printed)
{
    const descriptor_t full = open_full_device();
    launch_t launch;
    launch.out = full.get();
    EXPECT_EQ(run_audit({m_tree.path()}, launch).exit_code, 0);
}

TEST_F(exit_code_test, a_pipe_without_a_reader_exits_with_3)
{
    make_many_files();
    narrow_pipe_t pipe;
    pipe.reader = descriptor_t();
    launch_t launch;
    launch.out = pipe.writer.get();
    expect_failure(run_audit({"--severity", "info", m_tree.path()}, launch), 3,
                   "standard output cannot be written: Broken pipe");
}

TEST_F(exit_code_test, a_closed_standard_output_exits_with_3)
{
    m_tree.make_file("a");
    launch_t launch;
    launch.out = launch_t::closed;
    expect_failure(run_audit({"--severity", "info", m_tree.path()}, launch), 3,
                   "standard output cannot be written: Bad file descriptor");
}

TEST_F(exit_code_test, an_interrupted_walk_exits_with_130_after_its_summary)
{
    make_many_files();
    const interrupted_run_t walk({"--severity", "info", m_tree.path()});
    EXPECT_EQ(walk.result.exit_code, 130);
    ASSERT_FALSE(walk.lines.empty());
    EXPECT_EQ(walk.result.err, "");
    EXPECT_LT(walk.lines.size(), lines_of_many);
    EXPECT_EQ(walk.lines.back().compare(0, 26, "warning tree_summary audit"), 0);
    EXPECT_NE(walk.lines.back().find(" complete=no "), std::string::npos) << walk.lines.back();
}

TEST_F(exit_code_test, the_second_interrupt_ends_the_program_at_once)
{
    make_many_files();
    narrow_pipe_t pipe;
    launch_t launch;
    launch.out = pipe.writer.get();
    audit_process_t process({"--severity", "info", m_tree.path()}, launch);
    char first = 0;
    ASSERT_EQ(::read(pipe.reader.get(), &first, 1), 1);
    process.interrupt();
    // Nothing reads the pipe now, so the program cannot end by itself.
    while (process.catches_interrupt() && !HasFailure())
        std::this_thread::yield();
    process.interrupt();
    EXPECT_EQ(process.finish().exit_code, -SIGINT);
}

TEST_F(exit_code_test, an_interrupt_that_was_ignored_from_the_start_stays_ignored)
{
    make_many_files();
    launch_t launch;
    launch.ignores_interrupt = true;
    const interrupted_run_t walk({"--severity", "info", m_tree.path()}, launch);
    EXPECT_EQ(walk.result.exit_code, 0);
    EXPECT_EQ(walk.lines.size(), lines_of_many);
}

} // namespace
} // namespace audit

#include "audit_process.h"
#include "scratch_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace audit
{
namespace
{

typedef std::vector<std::string> lines_t;

class findings_test : public testing::Test
{
protected:
    /// Returns all lines of a walk of the tree.
    lines_t walk(lines_t options = {"--severity", "info"},
                 const launch_t& launch = launch_t()) const
    {
        options.push_back(m_tree.path());
        const result_t result = run_audit(options, launch);
        EXPECT_EQ(result.exit_code, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return lines_of(result.out);
    }

    /// Returns the lines that begin with this text, without it.
    lines_t rest_of(const std::string& begin, const lines_t& lines) const
    {
        lines_t rest;
        for (const std::string& line : lines)
            if (line.compare(0, begin.size(), begin) == 0)
                rest.push_back(line.substr(begin.size()));
        return rest;
    }

    lines_t find(const std::string& begin) const { return rest_of(begin + " audit ", walk()); }

    lines_t find_unprivileged(const std::string& begin) const
    {
        launch_t launch;
        launch.is_privileged = false;
        return rest_of(begin + " audit ", walk({"--severity", "info"}, launch));
    }

    std::string path(const std::string& name) const { return "path=" + m_tree.path(name); }

    const scratch_tree_t m_tree;
};

TEST_F(findings_test, each_file_is_seen_with_its_size_and_mode)
{
    m_tree.make_file("a", 12);
    m_tree.make_directory("b");
    m_tree.make_file("b/c", 34);
    m_tree.set_mode("b/c", 0640);
    EXPECT_EQ(find("info file_seen"), (lines_t{"mode=0644 " + path("a") + " size=12",
                                               "mode=0640 " + path("b/c") + " size=34"}));
}

TEST_F(findings_test, an_unreadable_directory_is_reported_and_not_entered)
{
    m_tree.make_directory("closed");
    m_tree.make_file("closed/inside");
    m_tree.set_mode("closed", 0);
    m_tree.make_file("next");
    EXPECT_EQ(find_unprivileged("error directory_unreadable"),
              lines_t{"error=EACCES " + path("closed")});
    EXPECT_EQ(find_unprivileged("info file_seen"),
              lines_t{"mode=0644 " + path("next") + " size=1"});
}

TEST_F(findings_test, a_directory_that_may_be_listed_but_not_searched_shows_its_names)
{
    m_tree.make_directory("listed");
    m_tree.make_file("listed/inside");
    m_tree.set_mode("listed", 0400);
    m_tree.make_file("next");
    EXPECT_EQ(find_unprivileged("error file_unreadable"),
              lines_t{"error=EACCES " + path("listed/inside")});
    EXPECT_EQ(find_unprivileged("info file_seen"),
              lines_t{"mode=0644 " + path("next") + " size=1"});
}

TEST_F(findings_test, an_unreadable_file_is_reported)
{
    m_tree.make_file("secret");
    m_tree.set_mode("secret", 0);
    EXPECT_EQ(find_unprivileged("error file_unreadable"),
              lines_t{"error=EACCES " + path("secret")});
}

TEST_F(findings_test, a_dangling_link_is_reported_with_its_target)
{
    m_tree.make_link("gone", "no/where");
    m_tree.make_file("file");
    m_tree.make_link("under_file", "file/x");
    EXPECT_EQ(find("warning link_dangling"),
              (lines_t{path("gone") + " target=no/where", path("under_file") + " target=file/x"}));
}

TEST_F(findings_test, a_target_of_any_bytes_is_reported)
{
    m_tree.make_link("blank", " ");
    m_tree.make_link("wild", "\x1b[2J\xff\n\"");
    EXPECT_EQ(find("warning link_dangling"),
              (lines_t{path("blank") + " target=\" \"",
                       path("wild") + R"( target=\x1b[2J\xff\x0a\x22)"}));
}

TEST_F(findings_test, links_in_a_cycle_are_reported)
{
    m_tree.make_link("one", "two");
    m_tree.make_link("two", "one");
    EXPECT_EQ(find("error link_loop"),
              (lines_t{path("one") + " target=two", path("two") + " target=one"}));
}

TEST_F(findings_test, a_link_with_an_inaccessible_target_is_not_reported_as_dangling)
{
    m_tree.make_directory("closed");
    m_tree.set_mode("closed", 0);
    m_tree.make_link("into", "closed/x");
    EXPECT_EQ(find_unprivileged("warning link_unreadable"),
              lines_t{"error=EACCES " + path("into") + " target=closed/x"});
}

TEST_F(findings_test, a_link_with_an_existing_target_is_not_a_finding)
{
    m_tree.make_file("file");
    m_tree.make_directory("dir");
    m_tree.make_link("to_file", "file");
    m_tree.make_link("to_dir", "dir");
    EXPECT_EQ(walk({"--severity", "warning"}), lines_t{});
}

TEST_F(findings_test, a_world_writable_file_is_an_error)
{
    m_tree.make_file("open");
    m_tree.set_mode("open", 0666);
    EXPECT_EQ(find("error file_world_writable"), lines_t{"mode=0666 " + path("open")});
}

TEST_F(findings_test, a_world_writable_setuid_or_setgid_file_is_critical)
{
    m_tree.make_file("user");
    m_tree.set_mode("user", 04777);
    m_tree.make_file("group");
    m_tree.set_mode("group", 02777);
    EXPECT_EQ(find("critical file_world_writable"),
              (lines_t{"mode=2777 " + path("group"), "mode=4777 " + path("user")}));
}

TEST_F(findings_test, a_file_is_large_from_the_chosen_size_on)
{
    m_tree.make_file("less", 2047);
    m_tree.make_file("more", 2048);
    const lines_t lines = walk({"--large", "2K"});
    EXPECT_EQ(rest_of("warning file_large audit ", lines), lines_t{path("more") + " size=2048"});
}

TEST_F(findings_test, an_empty_file_is_reported)
{
    m_tree.make_file("nothing", 0);
    m_tree.make_file("something", 1);
    EXPECT_EQ(find("info file_empty"), lines_t{path("nothing")});
}

TEST_F(findings_test, an_unprintable_name_is_reported_readably)
{
    const struct
    {
        const char* name;
        const char* text;
    } cases[] = {{"a\nb", R"(a\x0ab)"},
                 {"\x1b[31mred\x1b[m", R"(\x1b[31mred\x1b[m)"},
                 {"\xc2\x9b!", R"(\xc2\x9b!)"},
                 {"\xef\xbf\xbe", R"(\xef\xbf\xbe)"},
                 {"\xff\xfe", R"(\xff\xfe)"}};
    lines_t expected;
    for (const auto& given : cases) {
        m_tree.make_file(given.name);
        expected.push_back(path(given.text));
    }
    lines_t found = find("warning name_unprintable");
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(found, expected);
}

TEST_F(findings_test, a_printable_name_is_shown_as_it_is)
{
    m_tree.make_link("\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", "x");
    m_tree.make_link(R"(back\slash)", "x");
    const lines_t lines = walk();
    EXPECT_EQ(rest_of("warning name_unprintable", lines), lines_t{});
    EXPECT_EQ(rest_of("warning link_dangling audit ", lines),
              (lines_t{path(R"(back\\slash)") + " target=x",
                       path("\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80") + " target=x"}));
}

TEST_F(findings_test, a_name_cannot_change_the_text_direction_of_its_line)
{
    // In two parts, so that no literal turns its own line.
    m_tree.make_link(std::string("\xe2\x80") + "\xaegpj.exe", "x");
    EXPECT_EQ(find("warning link_dangling"), lines_t{path(R"(\xe2\x80\xaegpj.exe)") + " target=x"});
}

TEST_F(findings_test, a_fifo_is_not_opened)
{
    m_tree.make_fifo("fifo");
    m_tree.set_mode("fifo", 0666);
    EXPECT_EQ(
        find("info tree_summary"),
        lines_t{"bytes=0 complete=yes directories=1 files=0 findings=0 links=0 others=1 path=" +
                m_tree.path()});
}

TEST_F(findings_test, a_tree_of_3000_levels_is_walked_with_few_descriptors)
{
    m_tree.make_depth(3000);
    launch_t launch;
    launch.max_descriptors = 64;
    const lines_t lines = walk({"--severity", "info"}, launch);
    ASSERT_EQ(lines.size(), 2U);
    std::string bottom = m_tree.path();
    for (int level = 0; level < 3000; ++level)
        bottom += "/d";
    EXPECT_TRUE(lines[0] == "info file_seen audit mode=0644 path=" + bottom + "/bottom size=1");
    EXPECT_EQ(lines[1], "info tree_summary audit bytes=1 complete=yes directories=3001 files=1 "
                        "findings=0 links=0 others=0 path=" +
                            m_tree.path());
}

TEST_F(findings_test, only_messages_of_the_chosen_severity_and_above_are_printed)
{
    m_tree.make_file("info", 0);
    m_tree.make_link("warning", "nowhere");
    m_tree.make_file("error");
    m_tree.set_mode("error", 0666);
    m_tree.make_file("critical");
    m_tree.set_mode("critical", 04777);
    const struct
    {
        const char* severity;
        std::size_t lines;
    } cases[] = {{"info", 8}, {"warning", 4}, {"error", 3}, {"critical", 2}};
    for (const auto& given : cases)
        EXPECT_EQ(walk({"--severity", given.severity}).size(), given.lines) << given.severity;
    EXPECT_EQ(walk({}), walk({"--severity", "warning"}));
}

TEST_F(findings_test, two_walks_of_a_tree_print_the_same)
{
    for (const char* const name : {"c", "a", "b"})
        m_tree.make_link(name, name);
    EXPECT_EQ(walk(), walk());
}

TEST_F(findings_test, each_of_10000_files_sends_a_message_over_the_channel)
{
    for (int number = 0; number < 10000; ++number)
        m_tree.make_file(std::to_string(number));
    const result_t result = run_audit({"--progress", m_tree.path()});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("\r100 %\r     \r"), std::string::npos);
    EXPECT_NE(result.err.find("audit: 10001 messages crossed the channel, 0 were shown\n"),
              std::string::npos);
}

} // namespace
} // namespace audit

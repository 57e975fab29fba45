/// @file
#pragma once

#include "audit_process.h"
#include "scratch_tree.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace audit
{

typedef std::vector<std::string> lines_t;

/// A tree to walk, and a folder outside of it with a log.
class log_test_t : public testing::Test
{
protected:
    /// The lines of a run that must succeed without a complaint.
    static lines_t lines_of_run(const lines_t& arguments)
    {
        const result_t result = run_audit(arguments);
        EXPECT_EQ(result.exit_code, 0);
        EXPECT_EQ(result.err, "");
        return lines_of(result.out);
    }

    /// Walks the tree and records it.
    lines_t record(const std::string& severity = "info") const
    {
        return lines_of_run({"--log", m_log, "--severity", severity, m_tree.path()});
    }

    lines_t replay(const std::string& severity = "info") const
    {
        return lines_of_run({"--replay", m_log, "--severity", severity});
    }

    /// One finding of each severity, in this order, and the summary: critical.
    void make_findings() const
    {
        m_tree.make_file("a", 0);
        m_tree.make_link("b", "nowhere");
        m_tree.make_file("c");
        m_tree.set_mode("c", 0666);
        m_tree.make_file("d");
        m_tree.set_mode("d", 04777);
    }

    std::string read_log() const
    {
        std::ifstream file(m_log, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    void write_log(const std::string& text) const
    {
        std::ofstream(m_log, std::ios::binary) << text;
    }

    void expect_refusal(const result_t& result, const std::string& name,
                        const std::string& why) const
    {
        EXPECT_EQ(result.exit_code, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "audit: '" + name + "' cannot be " + why + '\n');
    }

    const scratch_tree_t m_tree;
    const scratch_tree_t m_folder;
    const std::string m_log = m_folder.path("log.xml");
};

} // namespace audit

#pragma once

#include "follower_process.h"
#include "storage_support.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace velmolog
{

using velmoext_1_4_8::foreign_log;
using velmoext_1_4_8::log_of;
using velmoext_1_4_8::message_of;

/// The declaration and the beginning of the root.
inline const std::string log_beginning = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n";

/// A scratch folder with a log in it, and the programs that follow logs.
class follower_test_t : public velmoext_1_4_8::storage_test_t
{
protected:
    std::string log() const { return m_folder.name("log.xml"); }

    void append(const std::string& text, const std::string& leaf = "log.xml") const
    {
        std::ofstream(m_folder.name(leaf), std::ios::binary | std::ios::app) << text;
    }

    void rename(const std::string& from, const std::string& to) const
    {
        std::filesystem::rename(m_folder.name(from), m_folder.name(to));
    }

    /// Expects that these lines are printed, after a last message that is appended to the log.
    void expect_lines(follower_process_t& follower, lines_t lines) const
    {
        append(message_of("last"));
        EXPECT_TRUE(follower.prints("last"));
        lines.emplace_back("last");
        EXPECT_EQ(follower.lines(), lines);
    }

    /// The same, after a recorder has started on the log.
    void expect_lines_after_a_start(follower_process_t& follower, lines_t lines) const
    {
        record_all(L"y");
        record_all(L"z");
        EXPECT_TRUE(follower.prints("z"));
        lines.emplace_back("y");
        lines.emplace_back("z");
        EXPECT_EQ(follower.lines(), lines);
    }
};

} // namespace velmolog

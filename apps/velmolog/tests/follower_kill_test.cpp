// Recorders are killed at random times and started again, and logs are rotated, while they are
// followed.

#include "follower_support.h"

#include "random_source.h"

#include <velmoext1/log_reader.h>

#include <rova/strings.h>

#include <algorithm>
#include <chrono>
#include <ctime>

using namespace velmolog;

namespace
{

// Returns the lines around the first difference; empty if there is none.
std::string first_difference(const lines_t& lines, const lines_t& expected)
{
    const auto from = std::mismatch(lines.begin(), lines.end(), expected.begin(), expected.end());
    if (from.first == lines.end() && from.second == expected.end())
        return std::string();
    std::string text = "line " + std::to_string(from.first - lines.begin()) + ":";
    for (auto line = from.first; line != lines.end() && line - from.first < 5; ++line)
        text += " " + *line;
    text += " instead of";
    for (auto line = from.second; line != expected.end() && line - from.second < 5; ++line)
        text += " " + *line;
    return text;
}

class follower_kill_test : public follower_test_t
{
protected:
    typedef velmoext_1_4_8::log_reader_t log_reader_t;

    // Returns the types of the complete messages.
    lines_t types_in_file(const std::string& leaf) const
    {
        log_reader_t reader(basekit2::path_t(m_folder.wide_name(leaf)));
        lines_t types;
        log_reader_t::result_t result = reader.next();
        for (;
             result == log_reader_t::result_t::message || result == log_reader_t::result_t::damage;
             result = reader.next())
            if (result == log_reader_t::result_t::message)
                types.emplace_back(reader.get_type());
        return types;
    }

    // Records until the process is killed or has recorded all. Types are never used twice.
    void record_and_kill(random_source_t& random)
    {
        const std::size_t count = random.between(1, 2000);
        const pid_t recorder =
            run_program({RECORDER, log(), std::to_string(m_next), std::to_string(count),
                         random.one_in(3) ? "unstable" : "stable"});
        m_rounds += "\nrecords from " + std::to_string(m_next);
        m_next += count;
        const timespec time = {0, static_cast<long>(random.between(1, 60)) * 1000000};
        nanosleep(&time, nullptr);
        bool is_killed = !random.one_in(4);
        if (random.one_in(3)) {
            kill(recorder, SIGSTOP);
            is_killed = rotate(random) || is_killed;
        }
        m_rounds += is_killed ? " is killed" : "";
        kill(recorder, is_killed ? SIGKILL : SIGCONT);
        wait_for_end(recorder);
    }

    // A log that is being rewritten is not complete without its copy. The follower cannot know a
    // file that appears and disappears while it does not run, nor a text that was truncated before.
    // Returns whether the recorder must not continue: it would write after a hole, and the next
    // start removes that.
    bool rotate(random_source_t& random)
    {
        const lines_t types = types_in_file("log.xml");
        if (types.empty() || m_folder.has("log.xml.tmp"))
            return false;
        const bool is_truncated = random.one_in(3);
        EXPECT_TRUE(m_follower.prints(is_truncated ? types.back() : types.front()));
        const std::string former = "log." + std::to_string(m_former.size());
        m_former.push_back(former);
        m_rounds += " rotated at " + types.back();
        if (is_truncated) {
            m_rounds += " truncated";
            std::filesystem::copy_file(log(), m_folder.name(former));
            std::filesystem::resize_file(log(), 0);
        } else if (random.one_in(2)) {
            rename("log.xml", former);
        } else {
            std::filesystem::create_hard_link(log(), m_folder.name(former));
            std::filesystem::remove(log());
        }
        return is_truncated;
    }

    // The next recorder has to rewrite the log.
    void make_foreign(random_source_t& random)
    {
        if (m_folder.has("log.xml.tmp"))
            return;
        const std::string message = "<msg><type>" + std::to_string(m_next++) + "</type></msg>\r\n";
        m_rounds += "\nforeign " + std::to_string(m_next - 1);
        if (!m_folder.has("log.xml"))
            m_folder.write("log.xml", "<log>\r\n" + message);
        else if (random.one_in(2))
            append_after_messages(message);
    }

    // Replaces the text after the last message, as a start does.
    void append_after_messages(const std::string& message) const
    {
        const std::string text = m_folder.read("log.xml");
        const std::string end = "</msg>";
        const std::size_t at = text.rfind(end);
        if (at == std::string::npos)
            return;
        std::filesystem::resize_file(log(), at + end.size());
        append("\n" + message);
    }

    lines_t all_types() const
    {
        lines_t types;
        std::vector<std::string> files = m_former;
        files.emplace_back("log.xml");
        for (const std::string& file : files)
            for (const std::string& type : types_in_file(file))
                types.push_back(type);
        return types;
    }

    follower_process_t m_follower{{log()}};
    unsigned long m_next = 1;
    std::string m_rounds;              ///< for the report of a failure
    std::vector<std::string> m_former; ///< names of rotated files, oldest first
};

} // namespace

// VELMOEXT1_RANDOM_CASES sets the number of rounds.
TEST_F(follower_kill_test, each_message_that_reached_a_file_is_read_once_and_in_order)
{
    const random_seeds_t seeds(60);
    random_source_t random(seeds.first);
    for (std::uint64_t round = 0; round < seeds.count && !HasFailure(); ++round) {
        if (random.one_in(4))
            make_foreign(random);
        record_and_kill(random);
    }
    EXPECT_EQ(wait_for_end(run_program({RECORDER, log(), std::to_string(m_next), "1", "stable"})),
              0);
    ASSERT_TRUE(m_follower.prints(std::to_string(m_next)));
    m_follower.end();
    const lines_t expected = all_types();
    EXPECT_GT(expected.size(), seeds.count);
    EXPECT_EQ(first_difference(m_follower.lines(), expected), "") << "rounds:" << m_rounds;
}

// Recorders are killed at random times and started again, and logs are rotated, while they are
// followed.

#include "follower_support.h"

#include "random_source.h"

#include <velmoext1/log_reader.h>

#include <rova/strings.h>

#include <chrono>
#include <ctime>
#include <set>

using namespace velmolog;

namespace
{

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
        for (; result == log_reader_t::result_t::message ||
               result == log_reader_t::result_t::damage;
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
        m_next += count;
        const timespec time = {0, static_cast<long>(random.between(1, 60)) * 1000000};
        nanosleep(&time, nullptr);
        if (random.one_in(3))
            rotate(random, recorder);
        if (!random.one_in(4))
            kill(recorder, SIGKILL);
        wait_for_end(recorder);
    }

    void rotate(random_source_t& random, pid_t recorder)
    {
        if (!m_folder.has("log.xml") || types_in_file("log.xml").empty())
            return;
        const std::string former = "log." + std::to_string(m_former.size());
        if (random.one_in(3)) {
            copy_and_truncate(former, recorder);
            return;
        }
        // The follower cannot know a file that appears and disappears while it does not run.
        ASSERT_TRUE(m_follower.prints(types_in_file("log.xml").front()));
        if (random.one_in(2)) {
            rename("log.xml", former);
        } else {
            std::filesystem::create_hard_link(log(), m_folder.name(former));
            std::filesystem::remove(log());
        }
        m_former.push_back(former);
    }

    // Text that is truncated before it was read is lost for the follower.
    void copy_and_truncate(const std::string& former, pid_t recorder)
    {
        kill(recorder, SIGSTOP);
        const lines_t types = types_in_file("log.xml");
        ASSERT_TRUE(m_follower.prints(types.back()));
        std::filesystem::copy_file(log(), m_folder.name(former));
        std::filesystem::resize_file(log(), 0);
        m_former.push_back(former);
        kill(recorder, SIGCONT);
        // A recorder that continues after the hole writes a log that the next start replaces.
        kill(recorder, SIGKILL);
    }

    // The next recorder has to rewrite the log.
    void make_foreign(random_source_t& random)
    {
        const std::string message = "<msg><type>" + std::to_string(m_next++) + "</type></msg>\r\n";
        if (m_folder.has("log.xml") && types_in_file("log.xml").empty())
            return;
        if (!m_folder.has("log.xml"))
            m_folder.write("log.xml", "<log>\r\n" + message);
        else if (random.one_in(2))
            append_after_messages(message);
    }

    // Replaces the text after the last message, as a start does.
    void append_after_messages(const std::string& message) const
    {
        const std::string text = m_folder.read("log.xml");
        const std::string end = "</msg>\n";
        const std::size_t at = text.rfind(end);
        if (at == std::string::npos)
            return;
        std::filesystem::resize_file(log(), at + end.size());
        append(message);
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
    std::vector<std::string> m_former; ///< names of rotated files, oldest first
};

} // namespace

// VELMOEXT1_RANDOM_CASES sets the number of rounds.
TEST_F(follower_kill_test, each_message_that_reached_a_file_is_read_once_and_in_order)
{
    const random_seeds_t seeds(60);
    random_source_t random(seeds.first);
    for (std::uint64_t round = 0; round < seeds.count && !HasFatalFailure(); ++round) {
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
    EXPECT_EQ(m_follower.lines(), expected);
    RecordProperty("messages", static_cast<int>(expected.size()));
}

// Logs that are cut or damaged at each of their bytes, and what velmolog rescues of them.

#include "commands.h"

#include "random_messages.h"
#include "storage_support.h"

#include <velmoext1/log_reader.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <vector>

using namespace velmoext_1_4_8;
using namespace velmolog;

namespace
{

// Uses scratch folders in memory unless the environment sets a directory, since a disk is slow.
[[maybe_unused]] const bool is_in_memory =
    setenv("TMPDIR", "/dev/shm", 0) == 0; // NOLINT(concurrency-mt-unsafe)

const char log_text[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                        "<log>\n"
                        " <msg tool=\"audit\">\n"
                        "  <arg name=\"path\">/a</arg>\n"
                        "  <type>file_large</type>\n"
                        "  <severity>WARNING</severity>\n"
                        " </msg>\n"
                        " <msg tool=\"a &amp; b\">\n"
                        "  <arg name=\"n\">&lt;\xC3\xA9&#13;</arg>\n"
                        "  <arg name=\"empty\"/>\n"
                        "  <type>\xF0\x9F\x98\x80</type>\n"
                        " </msg>\n"
                        " <!-- by another writer -->\n"
                        " <msg><type><![CDATA[<msg>]]></type><severity>2</severity></msg>\n"
                        " <msg>\n"
                        "  <host>alpha</host>\n"
                        "  <type/>\n"
                        "  <severity>CRITICAL</severity>\n"
                        " </msg>\n"
                        " <msg tool=\"audit\">\n"
                        "  <type>last</type>\n"
                        " </msg>\n"
                        "</log>\n";

struct message_range_t
{
    std::size_t begin;
    std::size_t end;
    std::string text;
};

/// Returns the messages of a log; `is_whole` is whether it has nothing else.
std::vector<message_range_t> messages_of(const std::string& log, bool& is_whole)
{
    std::size_t next = 0;
    log_reader_t reader([&log, &next](char* bytes, std::size_t size) {
        const std::size_t count = log.copy(bytes, size, next);
        next += count;
        return count;
    });
    std::vector<message_range_t> messages;
    log_reader_t::result_t result = reader.next();
    for (; result == log_reader_t::result_t::message; result = reader.next())
        messages.push_back({static_cast<std::size_t>(reader.get_begin().offset),
                            static_cast<std::size_t>(reader.get_end().offset),
                            std::string(reader.get_text())});
    is_whole = result == log_reader_t::result_t::end;
    return messages;
}

/// Each of these, at any offset, damages a log that has another byte there.
const std::string damaging_bytes("&<>\"x \x01\xFF\0", 9);

class rescue_test : public storage_test_t
{
protected:
    rescue_test() { set_log(log_text); }

    void set_log(const std::string& log)
    {
        m_log = log;
        bool is_whole = false;
        m_messages = messages_of(m_log, is_whole);
        EXPECT_TRUE(is_whole);
    }

    /// Records random messages, and takes their log.
    void set_random_log(std::uint64_t seed)
    {
        random_source_t random(seed);
        std::filesystem::remove(m_folder.name("random.xml"));
        const storage_ptr_t storage = get("random.xml");
        ASSERT_TRUE(storage->start_recording());
        for (std::size_t count = 1 + random.below(4); count != 0; --count)
            storage->on_message(boost::shared_ptr<velmo_ex_t>(),
                                boost::make_shared<message_t>(random_message(random)));
        ASSERT_TRUE(storage->stop_recording());
        set_log(m_folder.read("random.xml"));
    }

    /// Rescues the log, and returns the texts of the messages in the new one.
    std::vector<std::string> rescued(const std::string& log, exit_status_t& status)
    {
        m_folder.write("log.xml", log);
        std::filesystem::remove(m_folder.name("new.xml"));
        options_t options;
        options.command = command_t::rescue;
        options.logs = {m_folder.name("log.xml")};
        options.output = m_folder.name("new.xml");
        m_report.str(std::string());
        status = rescue(options, m_report);
        bool is_whole = false;
        std::vector<std::string> texts;
        for (const message_range_t& message : messages_of(m_folder.read("new.xml"), is_whole))
            texts.push_back(message.text);
        EXPECT_TRUE(is_whole) << m_folder.read("new.xml");
        EXPECT_EQ(m_folder.read("log.xml"), log);
        return texts;
    }

    /// Checks that the texts have all messages without these bytes, in their order.
    void expect_others(const std::vector<std::string>& texts, std::size_t begin,
                       std::size_t end) const
    {
        auto next = texts.begin();
        for (const message_range_t& message : m_messages) {
            if (begin < message.end && message.begin < end)
                continue;
            next = std::find(next, texts.end(), message.text);
            ASSERT_NE(next, texts.end()) << "lost: " << message.text;
            ++next;
        }
    }

    /// Damages each byte in several ways. Counts the logs that were found damaged.
    void damage_everywhere(std::size_t& damaged)
    {
        for (std::size_t offset = 0; offset != m_log.size(); ++offset)
            for (const char byte : damaging_bytes) {
                SCOPED_TRACE("offset " + std::to_string(offset) + ", byte " +
                             std::to_string(static_cast<unsigned char>(byte)));
                std::string log = m_log;
                log[offset] = byte;
                exit_status_t status = cannot_run;
                expect_others(rescued(log, status), offset, offset + 1);
                if (HasFailure())
                    return;
                damaged += status == found ? 1 : 0;
            }
    }

    std::string m_log;
    std::vector<message_range_t> m_messages;
    std::ostringstream m_report;
};

} // namespace

TEST_F(rescue_test, a_log_that_is_cut_anywhere_keeps_its_complete_messages)
{
    for (std::size_t size = 0; size <= m_log.size(); ++size) {
        SCOPED_TRACE("size " + std::to_string(size));
        exit_status_t status = cannot_run;
        const std::vector<std::string> texts = rescued(m_log.substr(0, size), status);
        std::vector<std::string> expected;
        for (const message_range_t& message : m_messages)
            if (message.end <= size)
                expected.push_back(message.text);
        ASSERT_EQ(texts, expected);
        ASSERT_EQ(status, fine) << m_report.str();
    }
}

TEST_F(rescue_test, a_log_that_is_damaged_anywhere_keeps_its_other_messages)
{
    ASSERT_EQ(m_messages.size(), 5U);
    std::size_t damaged = 0;
    damage_everywhere(damaged);
    EXPECT_GT(damaged, m_log.size());
}

TEST_F(rescue_test, a_random_log_that_is_cut_anywhere_keeps_its_complete_messages)
{
    const random_seeds_t seeds(5);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        set_random_log(seed);
        for (std::size_t size = 0; size <= m_log.size(); ++size) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", size " + std::to_string(size));
            exit_status_t status = cannot_run;
            expect_others(rescued(m_log.substr(0, size), status), size, m_log.size());
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_F(rescue_test, a_random_log_that_is_damaged_anywhere_keeps_its_other_messages)
{
    const random_seeds_t seeds(1);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        set_random_log(seed);
        std::size_t damaged = 0;
        damage_everywhere(damaged);
        ASSERT_FALSE(HasFailure());
        EXPECT_GT(damaged, m_log.size());
    }
}

TEST_F(rescue_test, a_recording_that_was_cut_and_continued_keeps_the_messages_of_both)
{
    // In a section or comment of the first log, the end of another one would make all text before
    // it well-formed.
    const std::size_t begin = m_log.find(" <!--");
    const std::size_t end = m_log.find(" <msg>\n", begin);
    const std::string second = m_log.substr(0, begin) + m_log.substr(end);
    bool is_whole = false;
    const std::vector<message_range_t> messages_of_second = messages_of(second, is_whole);
    ASSERT_EQ(messages_of_second.size(), 4U);
    for (std::size_t size = 0; size < m_log.size(); ++size) {
        SCOPED_TRACE("size " + std::to_string(size));
        exit_status_t status = cannot_run;
        const std::vector<std::string> texts = rescued(m_log.substr(0, size) + second, status);
        std::vector<std::string> expected;
        for (const message_range_t& message : m_messages)
            if (message.end <= size)
                expected.push_back(message.text);
        for (const message_range_t& message : messages_of_second)
            expected.push_back(message.text);
        ASSERT_EQ(texts, expected);
        // A part of the declaration can be one with the next declaration.
        if (size > m_log.find("<log>")) {
            ASSERT_EQ(status, found) << m_report.str();
        }
    }
}

// Logs that are cut or damaged at each of their bytes, and what velmolog rescues of them.

#include "commands.h"

#include "scratch_folder.h"

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

class rescue_test : public testing::Test
{
protected:
    rescue_test()
    {
        bool is_whole = false;
        m_messages = messages_of(m_log, is_whole);
        EXPECT_TRUE(is_whole);
        EXPECT_EQ(m_messages.size(), 5U);
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

    /// Checks that the texts have all messages without the byte, in their order.
    void expect_others(const std::vector<std::string>& texts, std::size_t byte) const
    {
        auto next = texts.begin();
        for (const message_range_t& message : m_messages) {
            if (message.begin <= byte && byte < message.end)
                continue;
            next = std::find(next, texts.end(), message.text);
            ASSERT_NE(next, texts.end()) << "lost: " << message.text;
            ++next;
        }
    }

    std::string m_log = log_text;
    std::vector<message_range_t> m_messages;
    scratch_folder_t m_folder;
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
    const std::string bytes("&<>\"x \x01\xFF\0", 9);
    std::size_t damaged = 0;
    for (std::size_t offset = 0; offset != m_log.size(); ++offset)
        for (const char byte : bytes) {
            SCOPED_TRACE("offset " + std::to_string(offset) + ", byte " +
                         std::to_string(static_cast<unsigned char>(byte)));
            std::string log = m_log;
            log[offset] = byte;
            exit_status_t status = cannot_run;
            expect_others(rescued(log, status), offset);
            if (HasFailure())
                return;
            damaged += status == found ? 1 : 0;
        }
    EXPECT_GT(damaged, m_log.size());
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

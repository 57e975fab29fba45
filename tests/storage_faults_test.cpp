// The system does what it may at any instant: interrupts, writes less than it was asked to,
// refuses, or takes the log away.

#include "process_support.h"
#include "storage_support.h"
#include "system_faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

// Messages enough for several portions.
const int old_messages = 200;

class storage_faults_test : public storage_test_t
{
protected:
    // Records the numbers from the first up to the last one, without it.
    void record_numbers(const storage_ptr& storage, int first, int last) const
    {
        for (int i = first; i < last; ++i)
            record(storage, std::to_wstring(i));
    }

    void make_old_log() const
    {
        const storage_ptr storage = get();
        ASSERT_TRUE(storage->start_recording());
        record_numbers(storage, 0, old_messages);
        ASSERT_TRUE(storage->stop_recording());
    }

    static std::wstring numbers(int first, int last)
    {
        std::wstring types;
        for (int i = first; i < last; ++i)
            types += std::to_wstring(i) + L";";
        return types;
    }

    // A start, messages and a stop on a log that is there.
    bool go_on_recording() const
    {
        const storage_ptr storage = get();
        const bool is_started = storage->start_recording();
        record_numbers(storage, old_messages, 2 * old_messages);
        EXPECT_TRUE(storage->stop_recording());
        return is_started;
    }

    // Answers whether the start said that recording is on, and whether the log was emptied with no
    // copy beside it.
    std::pair<bool, bool> go_on_while_one_fails(std::size_t failing, int error) const
    {
        std::size_t next = 0;
        bool is_emptied = false;
        const with_faults faults([&](const std::string& call, int) {
            if (call == "ftruncate")
                is_emptied = !m_folder.has("log.xml.tmp");
            return next++ == failing ? error : 0;
        });
        const bool is_started = go_on_recording();
        return {is_started, is_emptied};
    }

    // Whole and in front of all others, if they are there.
    void expect_old_messages_unless(bool may_be_lost) const
    {
        const std::wstring types = types_in();
        const bool are_there = types.rfind(numbers(0, old_messages), 0) == 0;
        EXPECT_TRUE(are_there || may_be_lost) << testing::PrintToString(types);
        EXPECT_EQ(types.substr(types.size() - 2), L"z;");
    }
};

// Which calls a recording makes.
std::vector<std::string> calls_of(const std::function<void()>& action)
{
    std::vector<std::string> calls;
    const with_faults listening([&](const std::string& call, int) {
        calls.push_back(call);
        return 0;
    });
    action();
    return calls;
}

// A copy that cannot be opened once the log is empty goes, and the old messages with it.
bool opens_the_copy(const std::vector<std::string>& calls, std::size_t call)
{
    return call != 0 && calls[call - 1] == "ftruncate";
}

} // namespace

TEST_F(storage_faults_test, short_reads_and_writes_are_gone_on_with)
{
    const with_short_pieces pieces(7, 3);
    make_old_log();
    EXPECT_TRUE(go_on_recording());
    EXPECT_EQ(types_in(), numbers(0, 2 * old_messages));
}

TEST_F(storage_faults_test, interruptions_are_gone_on_with)
{
    std::map<std::string, int> counts;
    const with_faults faults([&](const std::string& call, int) {
        const bool can_be_interrupted = call == "open" || call == "write" || call == "pread" ||
                                        call == "flock" || call == "ftruncate";
        return can_be_interrupted && ++counts[call] % 3 != 0 ? EINTR : 0;
    });
    make_old_log();
    EXPECT_TRUE(go_on_recording());
    EXPECT_EQ(types_in(), numbers(0, 2 * old_messages));
    EXPECT_EQ(counts.size(), 5U);
}

TEST_F(storage_faults_test, whichever_call_fails_old_messages_stay_where_a_copy_of_them_was_made)
{
    make_old_log();
    const std::string old_log = m_folder.read("log.xml");
    const std::vector<std::string> calls = calls_of([&] { go_on_recording(); });
    for (const int error : {EIO, ENOSPC, EROFS, EDQUOT, ENOMEM})
        for (std::size_t failing = 0; failing != calls.size(); ++failing) {
            m_folder.write("log.xml", old_log);
            SCOPED_TRACE(calls[failing] + " at " + std::to_string(failing) + ": " +
                         std::strerror(error));
            const auto [is_started, is_emptied] = go_on_while_one_fails(failing, error);
            const bool costs_the_copy = opens_the_copy(calls, failing);
            EXPECT_TRUE(is_started || costs_the_copy || m_folder.has("log.xml.tmp") ||
                        m_folder.read("log.xml") == old_log);
            record_all(L"z");
            expect_old_messages_unless(costs_the_copy || (is_started && is_emptied));
            EXPECT_FALSE(m_folder.has("log.xml.tmp"));
        }
}

TEST_F(storage_faults_test, a_log_that_cannot_be_opened_is_not_recorded_and_stays)
{
    make_old_log();
    const std::string old_log = m_folder.read("log.xml");
    for (const int error : {EROFS, EACCES, EMFILE, ENFILE, ELOOP, ETXTBSY}) {
        const with_faults faults(
            [&](const std::string& call, int) { return call == "open" ? error : 0; });
        const storage_ptr storage = get();
        EXPECT_FALSE(storage->start_recording()) << std::strerror(error);
        record(storage, L"lost");
        EXPECT_TRUE(storage->stop_recording());
        EXPECT_FALSE(storage->start_reading());
    }
    EXPECT_EQ(m_folder.read("log.xml"), old_log);
}

TEST_F(storage_faults_test, after_a_refused_write_nothing_more_is_written_until_the_stop)
{
    for (const int error : {EIO, ENOSPC, EDQUOT}) {
        const storage_ptr storage = get();
        std::filesystem::remove(m_folder.name("log.xml"));
        ASSERT_TRUE(storage->start_recording());
        int writes = 0;
        const with_faults faults([&](const std::string& call, int) {
            return call == "write" && ++writes == 3 ? error : 0;
        });
        record_numbers(storage, 0, 10 * old_messages);
        EXPECT_TRUE(storage->stop_recording());
        EXPECT_EQ(writes, 3) << std::strerror(error);
        const std::wstring types = types_in();
        EXPECT_GT(types.size(), 0U);
        EXPECT_EQ(types, numbers(0, 10 * old_messages).substr(0, types.size()));
    }
}

TEST_F(storage_faults_test, a_replay_that_cannot_read_answers_false_and_can_be_tried_again)
{
    make_old_log();
    const storage_ptr storage = get();
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"storage_faults_test."), L"");
    ASSERT_TRUE(storage->start_reading());
    {
        const with_faults faults(
            [](const std::string& call, int) { return call == "pread" ? EIO : 0; });
        EXPECT_FALSE(storage->replay(ex));
    }
    EXPECT_EQ(replay(storage), numbers(0, old_messages));
}

TEST_F(storage_faults_test, a_replay_that_reads_a_part_goes_on_behind_it)
{
    m_folder.write("log.xml", "<log><msg><type>a</type></msg>\n<log><msg><type>b</type></msg>");
    const std::size_t first = m_folder.read("log.xml").find('\n');
    const storage_ptr storage = get();
    {
        int reads = 0;
        const with_short_pieces pieces(first, SIZE_MAX);
        const with_faults faults(
            [&](const std::string& call, int) { return call == "pread" && ++reads > 1 ? EIO : 0; });
        EXPECT_EQ(replay(storage), L"a;");
    }
    EXPECT_EQ(replay(storage), L"b;");
}

TEST_F(storage_faults_test, a_reading_that_cannot_be_started_again_is_over)
{
    make_old_log();
    const storage_ptr storage = get();
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"storage_faults_test."), L"");
    ASSERT_TRUE(storage->start_reading());
    {
        const with_faults faults(
            [](const std::string& call, int) { return call == "open" ? EMFILE : 0; });
        EXPECT_FALSE(storage->start_reading());
    }
    EXPECT_FALSE(storage->replay(ex));
    EXPECT_EQ(replay(storage), numbers(0, old_messages));
}

TEST_F(storage_faults_test, messages_are_written_in_portions_not_one_by_one)
{
    const storage_ptr storage = get();
    ASSERT_TRUE(storage->start_recording());
    const std::vector<std::string> calls =
        calls_of([&] { record_numbers(storage, 0, old_messages); });
    EXPECT_GT(std::count(calls.begin(), calls.end(), "write"), 0) << "none before the stop";
    EXPECT_LT(std::count(calls.begin(), calls.end(), "write"), old_messages / 10);
}

TEST_F(storage_faults_test, what_appears_in_the_place_of_the_copy_meanwhile_is_left_alone)
{
    make_old_log();
    const std::string old_log = m_folder.read("log.xml");
    {
        const with_faults faults([&](const std::string& call, int) {
            if (call == "fchmod")
                m_folder.write("log.xml.tmp", "new");
            return 0;
        });
        EXPECT_FALSE(get()->start_recording());
    }
    EXPECT_EQ(m_folder.read("log.xml.tmp"), "new");
    EXPECT_EQ(m_folder.read("log.xml"), old_log);
}

TEST_F(storage_faults_test, where_the_copy_cannot_be_opened_it_goes_and_the_log_is_free_again)
{
    make_old_log();
    const storage_ptr storage = get();
    {
        bool is_emptied = false;
        const with_faults faults([&](const std::string& call, int) {
            const bool fails = is_emptied && call == "open";
            is_emptied = is_emptied || call == "ftruncate";
            return fails ? EMFILE : 0;
        });
        EXPECT_FALSE(storage->start_recording());
    }
    EXPECT_FALSE(m_folder.has("log.xml.tmp"));
    EXPECT_TRUE(get("./log.xml")->start_recording());
    EXPECT_TRUE(storage->start_recording()) << "a start while recording changes nothing";
    EXPECT_TRUE(storage->stop_recording());
}

TEST_F(storage_faults_test, where_the_copy_cannot_be_removed_nothing_is_recorded_and_nothing_lost)
{
    make_old_log();
    {
        const with_faults faults(
            [](const std::string& call, int) { return call == "unlink" ? EIO : 0; });
        EXPECT_FALSE(go_on_recording());
    }
    EXPECT_TRUE(m_folder.has("log.xml.tmp"));
    record_all(L"z");
    EXPECT_EQ(types_in(), numbers(0, old_messages) + L"z;");
}

TEST_F(storage_faults_test, a_copy_of_another_user_is_left_alone)
{
    make_old_log();
    std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
    {
        const with_other_user other;
        EXPECT_FALSE(get()->start_recording());
    }
    EXPECT_TRUE(m_folder.has("log.xml.tmp"));
    EXPECT_FALSE(m_folder.has("log.xml"));
    record_all(L"a");
    EXPECT_EQ(types_in(), numbers(0, old_messages) + L"a;");
}

// ---- the log goes, or another one comes

TEST_F(storage_faults_test, a_log_that_is_removed_meanwhile_is_made_again_by_the_next_start)
{
    const storage_ptr storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    std::filesystem::remove(m_folder.name("log.xml"));
    record(storage, L"b");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_FALSE(m_folder.has("log.xml"));
    EXPECT_TRUE(storage->start_recording());
    record(storage, L"c");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"c;");
}

TEST_F(storage_faults_test, a_log_that_is_replaced_meanwhile_is_left_alone_until_the_next_start)
{
    record_all(L"xy", "other.xml");
    const std::string other = m_folder.read("other.xml");
    const storage_ptr storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    std::filesystem::rename(m_folder.name("other.xml"), m_folder.name("log.xml"));
    record(storage, L"b");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(m_folder.read("log.xml"), other);
    EXPECT_TRUE(storage->start_recording());
    record(storage, L"c");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"x;y;c;");
}

TEST_F(storage_faults_test, a_log_that_is_replaced_while_it_is_locked_is_left_alone)
{
    make_old_log();
    m_folder.write("other.xml", "other");
    {
        const with_faults faults([&](const std::string& call, int) {
            if (call == "flock" && m_folder.has("other.xml"))
                std::filesystem::rename(m_folder.name("other.xml"), m_folder.name("log.xml"));
            return 0;
        });
        EXPECT_FALSE(get()->start_recording());
    }
    EXPECT_EQ(m_folder.read("log.xml"), "other");
}

TEST_F(storage_faults_test, a_log_that_is_replaced_by_a_folder_cannot_be_recorded_again)
{
    const storage_ptr storage = get();
    ASSERT_TRUE(storage->start_recording());
    std::filesystem::remove(m_folder.name("log.xml"));
    std::filesystem::create_directory(m_folder.name("log.xml"));
    record(storage, L"a");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_FALSE(storage->start_recording());
    EXPECT_FALSE(storage->start_reading());
}

TEST_F(storage_faults_test, a_log_that_is_emptied_meanwhile_is_recorded_again)
{
    const storage_ptr storage = get();
    ASSERT_TRUE(storage->start_recording());
    record_numbers(storage, 0, old_messages);
    m_folder.write("log.xml", "");
    record_numbers(storage, 0, old_messages);
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_TRUE(storage->start_recording());
    record(storage, L"c");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"c;");
}

// ---- paths that lead nowhere

TEST_F(storage_faults_test, a_path_that_is_too_long_for_the_system_is_refused)
{
    for (const std::size_t size : {4095U, 4096U, 5000U, 100000U}) {
        std::wstring name = m_folder.wide_name("");
        while (name.size() < size)
            name += L"abcdefg/";
        name.resize(size - 1);
        const auto storage = messages_storage_t::get(basekit2::path_t(name + L"x"));
        EXPECT_FALSE(storage->start_recording()) << size;
        EXPECT_FALSE(storage->start_reading()) << size;
        EXPECT_TRUE(storage->stop_recording()) << size;
    }
    EXPECT_TRUE(std::filesystem::is_empty(m_folder.name("")));
}

TEST_F(storage_faults_test, a_device_is_not_even_opened)
{
    std::filesystem::create_symlink("/dev/null", m_folder.name("log.xml"));
    const storage_ptr storage = get();
    const std::vector<std::string> calls = calls_of([&] {
        EXPECT_FALSE(storage->start_recording());
        EXPECT_FALSE(storage->start_reading());
    });
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "open"), 0);
}

TEST_F(storage_faults_test, in_a_working_folder_that_vanished_only_whole_paths_can_be_recorded)
{
    std::filesystem::create_directory(m_folder.name("gone"));
    const with_current_directory gone(m_folder.name("gone"));
    std::filesystem::remove(m_folder.name("gone"));
    const auto relative = messages_storage_t::get(basekit2::path_t(L"log.xml"));
    EXPECT_FALSE(relative->start_recording());
    EXPECT_FALSE(relative->start_reading());
    record_all(L"ab");
    EXPECT_EQ(types_in(), L"a;b;");
}

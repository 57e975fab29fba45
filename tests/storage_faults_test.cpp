// The system may at any moment interrupt a call, write less than requested, refuse a call, or
// remove the log.

#include "process_support.h"
#include "storage_support.h"
#include "system_faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

// Enough messages for several writes.
const int old_messages = 200;

// Returns the file system calls of an action.
std::vector<std::string> calls_of(const std::function<void()>& action)
{
    std::vector<std::string> calls;
    const faults_scope_t faults([&](const std::string& call, int) {
        calls.push_back(call);
        return 0;
    });
    action();
    return calls;
}

class storage_faults_test : public storage_test_t
{
protected:
    // Records the numbers from `first` to `last`, without `last`.
    void record_numbers(const storage_ptr_t& storage, int first, int last) const
    {
        for (int i = first; i < last; ++i)
            record(storage, std::to_wstring(i));
    }

    void make_old_log() const
    {
        const storage_ptr_t storage = get();
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

    // Starts, records and stops on an existing log.
    bool record_on_old_log() const
    {
        const storage_ptr_t storage = get();
        const bool is_started = storage->start_recording();
        record_numbers(storage, old_messages, 2 * old_messages);
        EXPECT_TRUE(storage->stop_recording());
        return is_started;
    }

    // Returns whether the start succeeded, and whether the log was truncated before.
    std::pair<bool, bool> record_with_failing_call(std::size_t failing, int error) const
    {
        std::size_t next = 0;
        bool is_truncated = false;
        const faults_scope_t faults([&](const std::string& call, int) {
            const bool fails = next++ == failing;
            is_truncated = is_truncated || (call == "ftruncate" && !fails);
            return fails ? error : 0;
        });
        const bool is_started = record_on_old_log();
        return {is_started, is_truncated};
    }

    // Returns the log and its copy.
    std::pair<std::string, std::string> files() const
    {
        return {m_folder.read("log.xml"), m_folder.read("log.xml.tmp")};
    }

    void write(const std::pair<std::string, std::string>& files) const
    {
        for (const auto& [leaf, bytes] :
             {std::pair("log.xml", files.first), std::pair("log.xml.tmp", files.second)}) {
            std::filesystem::remove(m_folder.name(leaf));
            if (!bytes.empty())
                m_folder.write(leaf, bytes);
        }
    }

    // Makes each call fail once with each error. In each case the next start must find the old
    // messages.
    void expect_nothing_lost_if_any_call_fails(const std::pair<std::string, std::string>& old)
    {
        write(old);
        const std::vector<std::string> calls = calls_of([&] { record_on_old_log(); });
        for (const int error : {EIO, ENOSPC, EROFS, EDQUOT, ENOMEM, EMFILE})
            for (std::size_t failing = 0; failing != calls.size(); ++failing) {
                write(old);
                SCOPED_TRACE(calls[failing] + " at " + std::to_string(failing) + ": " +
                             std::strerror(error));
                const auto [is_started, is_truncated] = record_with_failing_call(failing, error);
                EXPECT_TRUE(is_started || is_truncated || files() == old);
                // Without a lock it is unknown whether another process records into the log.
                EXPECT_TRUE(is_started || is_truncated || calls[failing] == "flock" ||
                            m_folder.has("log.xml") != old.first.empty())
                    << "a log was created";
                record_all(L"z");
                const std::wstring types = types_in();
                EXPECT_EQ(types.substr(0, m_old_types.size()), m_old_types);
                EXPECT_EQ(types.substr(types.size() - 2), L"z;");
                EXPECT_FALSE(m_folder.has("log.xml.tmp"));
            }
    }

    // Returns the old messages in a form that a start rewrites.
    static std::string foreign_old_log()
    {
        std::vector<std::string> types;
        for (int i = 0; i < old_messages; ++i)
            types.push_back(std::to_string(i));
        return foreign_log(types);
    }

    std::wstring m_old_types = numbers(0, old_messages);
};

} // namespace

TEST_F(storage_faults_test, short_reads_and_writes_are_continued)
{
    const short_io_scope_t short_io(7, 3);
    make_old_log();
    EXPECT_TRUE(record_on_old_log());
    EXPECT_EQ(types_in(), numbers(0, 2 * old_messages));
}

TEST_F(storage_faults_test, interrupted_calls_are_repeated)
{
    std::map<std::string, int> counts;
    const faults_scope_t faults([&](const std::string& call, int) {
        const bool can_be_interrupted = call == "open" || call == "write" || call == "pread" ||
                                        call == "flock" || call == "ftruncate";
        return can_be_interrupted && ++counts[call] % 3 != 0 ? EINTR : 0;
    });
    make_old_log();
    EXPECT_TRUE(record_on_old_log());
    EXPECT_EQ(types_in(), numbers(0, 2 * old_messages));
    EXPECT_EQ(counts.size(), 5U);
}

TEST_F(storage_faults_test, no_old_message_is_lost_if_any_call_fails)
{
    make_old_log();
    expect_nothing_lost_if_any_call_fails(files());
}

TEST_F(storage_faults_test, no_old_message_of_a_foreign_log_is_lost_if_any_call_fails)
{
    expect_nothing_lost_if_any_call_fails({foreign_old_log(), ""});
}

TEST_F(storage_faults_test, no_old_message_of_a_copy_is_lost_if_any_call_fails)
{
    expect_nothing_lost_if_any_call_fails({"", foreign_old_log()});
}

TEST_F(storage_faults_test, a_log_that_cannot_be_opened_is_not_changed)
{
    make_old_log();
    const std::string old_log = m_folder.read("log.xml");
    for (const int error : {EROFS, EACCES, EMFILE, ENFILE, ELOOP, ETXTBSY}) {
        const faults_scope_t faults(
            [&](const std::string& call, int) { return call == "open" ? error : 0; });
        const storage_ptr_t storage = get();
        EXPECT_FALSE(storage->start_recording()) << std::strerror(error);
        record(storage, L"lost");
        EXPECT_TRUE(storage->stop_recording());
        EXPECT_FALSE(storage->start_reading());
    }
    EXPECT_EQ(m_folder.read("log.xml"), old_log);
}

TEST_F(storage_faults_test, after_a_failed_write_nothing_more_is_written_until_the_stop)
{
    for (const int error : {EIO, ENOSPC, EDQUOT}) {
        const storage_ptr_t storage = get();
        std::filesystem::remove(m_folder.name("log.xml"));
        ASSERT_TRUE(storage->start_recording());
        int writes = 0;
        const faults_scope_t faults([&](const std::string& call, int) {
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

TEST_F(storage_faults_test, a_replay_that_cannot_read_returns_false_and_can_be_repeated)
{
    make_old_log();
    const storage_ptr_t storage = get();
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"storage_faults_test."), L"");
    ASSERT_TRUE(storage->start_reading());
    {
        const faults_scope_t faults(
            [](const std::string& call, int) { return call == "pread" ? EIO : 0; });
        EXPECT_FALSE(storage->replay(ex));
    }
    EXPECT_EQ(replay(storage), numbers(0, old_messages));
}

TEST_F(storage_faults_test, a_replay_that_reads_a_part_continues_after_it)
{
    m_folder.write("log.xml", "<log><msg><type>a</type></msg>\n<log><msg><type>b</type></msg>");
    const std::size_t first = m_folder.read("log.xml").find('\n');
    const storage_ptr_t storage = get();
    {
        int reads = 0;
        const short_io_scope_t short_io(first, SIZE_MAX);
        const faults_scope_t faults(
            [&](const std::string& call, int) { return call == "pread" && ++reads > 1 ? EIO : 0; });
        EXPECT_EQ(replay(storage), L"a;");
    }
    EXPECT_EQ(replay(storage), L"b;");
}

TEST_F(storage_faults_test, a_reading_that_cannot_be_restarted_ends)
{
    make_old_log();
    const storage_ptr_t storage = get();
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"storage_faults_test."), L"");
    ASSERT_TRUE(storage->start_reading());
    {
        const faults_scope_t faults(
            [](const std::string& call, int) { return call == "open" ? EMFILE : 0; });
        EXPECT_FALSE(storage->start_reading());
    }
    EXPECT_FALSE(storage->replay(ex));
    EXPECT_EQ(replay(storage), numbers(0, old_messages));
}

TEST_F(storage_faults_test, messages_are_written_in_chunks_not_one_by_one)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    const std::vector<std::string> calls =
        calls_of([&] { record_numbers(storage, 0, old_messages); });
    EXPECT_GT(std::count(calls.begin(), calls.end(), "write"), 0) << "none before the stop";
    EXPECT_LT(std::count(calls.begin(), calls.end(), "write"), old_messages / 10);
}

TEST_F(storage_faults_test, a_copy_that_cannot_be_opened_is_removed_and_the_log_is_released)
{
    const std::string old_log = foreign_old_log();
    m_folder.write("log.xml", old_log);
    const storage_ptr_t storage = get();
    {
        bool is_copied = false;
        const faults_scope_t faults([&](const std::string& call, int) {
            const bool fails = is_copied && call == "open";
            is_copied = is_copied || call == "linkat";
            return fails ? EMFILE : 0;
        });
        EXPECT_FALSE(storage->start_recording());
    }
    EXPECT_EQ(files(), std::pair(old_log, std::string()));
    EXPECT_TRUE(descriptors_of_log().empty());
    const storage_ptr_t other = get("./log.xml");
    EXPECT_TRUE(other->start_recording());
    EXPECT_TRUE(storage->start_recording()) << "it counts as recording until it is stopped";
    record(storage, L"lost");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_FALSE(storage->start_recording());
    EXPECT_TRUE(other->stop_recording());
    EXPECT_EQ(types_in(), m_old_types);
}

// In a child process, so that a start that never returns is ended.
TEST_F(storage_faults_test, a_copy_that_cannot_be_read_is_removed_and_the_log_stays)
{
    const std::string old_log = foreign_old_log();
    m_folder.write("log.xml", old_log);
    const int status = status_of_child([&] {
        alarm(10);
        bool is_copied = false;
        const faults_scope_t faults([&](const std::string& call, int) {
            is_copied = is_copied || call == "linkat";
            return is_copied && call == "pread" ? EIO : 0;
        });
        return get()->start_recording() ? 1 : 0;
    });
    EXPECT_TRUE(has_exited_with(status, 0));
    EXPECT_EQ(files(), std::pair(old_log, std::string()));
}

TEST_F(storage_faults_test, a_start_that_cannot_truncate_the_log_leaves_the_storage_idle)
{
    make_old_log();
    for (const std::string& old_log : {m_folder.read("log.xml"), foreign_old_log()}) {
        m_folder.write("log.xml", old_log);
        const storage_ptr_t storage = get();
        {
            const faults_scope_t faults(
                [](const std::string& call, int) { return call == "ftruncate" ? EIO : 0; });
            EXPECT_FALSE(storage->start_recording());
            EXPECT_FALSE(storage->start_recording()) << "the storage counts as recording";
        }
        EXPECT_EQ(files(), std::pair(old_log, std::string()));
        EXPECT_TRUE(descriptors_of_log().empty());
    }
}

TEST_F(storage_faults_test, if_the_copy_cannot_be_removed_nothing_is_recorded_or_lost)
{
    m_folder.write("log.xml", foreign_old_log());
    {
        const faults_scope_t faults(
            [](const std::string& call, int) { return call == "unlink" ? EIO : 0; });
        EXPECT_FALSE(record_on_old_log());
    }
    EXPECT_TRUE(m_folder.has("log.xml.tmp"));
    record_all(L"z");
    EXPECT_EQ(types_in(), m_old_types + L"z;");
}

// ---- the log is removed or replaced

TEST_F(storage_faults_test, a_log_removed_during_a_recording_is_created_again_by_the_next_start)
{
    const storage_ptr_t storage = get();
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

TEST_F(storage_faults_test, a_log_replaced_during_a_recording_is_left_alone_until_the_next_start)
{
    record_all(L"xy", "other.xml");
    const std::string other = m_folder.read("other.xml");
    const storage_ptr_t storage = get();
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

TEST_F(storage_faults_test, a_created_log_that_another_recorder_locks_first_stays)
{
    const storage_ptr_t other = get("./log.xml");
    {
        bool is_created = false;
        const faults_scope_t faults([&](const std::string& call, int) {
            if (call == "flock" && !std::exchange(is_created, true)) {
                EXPECT_TRUE(other->start_recording());
            }
            return 0;
        });
        EXPECT_FALSE(get()->start_recording());
    }
    record(other, L"a");
    EXPECT_TRUE(other->stop_recording());
    EXPECT_EQ(types_in(), L"a;");
}

TEST_F(storage_faults_test, a_log_that_is_replaced_while_it_is_locked_is_left_alone)
{
    make_old_log();
    for (const std::string& old_log : {m_folder.read("log.xml"), std::string()}) {
        m_folder.write("log.xml", old_log);
        m_folder.write("other.xml", "other");
        {
            const faults_scope_t faults([&](const std::string& call, int) {
                if (call == "flock" && m_folder.has("other.xml"))
                    std::filesystem::rename(m_folder.name("other.xml"), m_folder.name("log.xml"));
                return 0;
            });
            EXPECT_FALSE(get()->start_recording());
        }
        EXPECT_EQ(m_folder.read("log.xml"), "other");
    }
}

// In a child process, so that a call that waits for the other end of the fifo is ended. EWOULDBLOCK
// is the error for a log with a lease.
TEST_F(storage_faults_test, a_log_that_becomes_a_fifo_as_it_is_opened_is_refused_at_once)
{
    const std::string fifo = m_folder.name("fifo");
    const auto starts = [&](bool is_reading, int error) {
        alarm(10);
        const faults_scope_t faults([&](const std::string& call, int) {
            if (call != "open" || !m_folder.has("fifo"))
                return 0;
            std::filesystem::rename(fifo, m_folder.name("log.xml"));
            return error;
        });
        return is_reading ? get()->start_reading() : get()->start_recording();
    };
    for (const bool is_reading : {true, false})
        for (const bool has_reader : {true, false})
            for (const int error : {0, EWOULDBLOCK}) {
                std::filesystem::remove(m_folder.name("log.xml"));
                m_folder.write("log.xml", empty_log);
                ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
                const int reader =
                    has_reader ? open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC) : -1;
                const int status = status_of_child([&] { return starts(is_reading, error); });
                EXPECT_TRUE(has_exited_with(status, 0)) << is_reading << has_reader << error;
                EXPECT_FALSE(m_folder.has("fifo"));
                close(reader);
            }
}

TEST_F(storage_faults_test, a_log_that_vanishes_while_it_has_a_lease_is_created_again)
{
    make_old_log();
    {
        const faults_scope_t faults([&](const std::string& call, int) {
            return call == "open" && std::filesystem::remove(m_folder.name("log.xml")) ? EWOULDBLOCK
                                                                                       : 0;
        });
        const storage_ptr_t storage = get();
        EXPECT_TRUE(storage->start_recording());
        record(storage, L"a");
        EXPECT_TRUE(storage->stop_recording());
    }
    EXPECT_EQ(types_in(), L"a;");
}

TEST_F(storage_faults_test, a_log_that_is_replaced_by_a_folder_cannot_be_recorded_again)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    std::filesystem::remove(m_folder.name("log.xml"));
    std::filesystem::create_directory(m_folder.name("log.xml"));
    record(storage, L"a");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_FALSE(storage->start_recording());
    EXPECT_FALSE(storage->start_reading());
}

TEST_F(storage_faults_test, a_log_emptied_during_a_recording_can_be_recorded_again)
{
    const storage_ptr_t storage = get();
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

// ---- invalid paths

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
    const storage_ptr_t storage = get();
    const std::vector<std::string> calls = calls_of([&] {
        EXPECT_FALSE(storage->start_recording());
        EXPECT_FALSE(storage->start_reading());
    });
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "open"), 0);
}

TEST_F(storage_faults_test, in_a_removed_working_directory_only_absolute_paths_can_be_recorded)
{
    std::filesystem::create_directory(m_folder.name("gone"));
    const current_directory_scope_t removed(m_folder.name("gone"));
    std::filesystem::remove(m_folder.name("gone"));
    const auto relative = messages_storage_t::get(basekit2::path_t(L"log.xml"));
    EXPECT_FALSE(relative->start_recording());
    EXPECT_FALSE(relative->start_reading());
    record_all(L"ab");
    EXPECT_EQ(types_in(), L"a;b;");
}

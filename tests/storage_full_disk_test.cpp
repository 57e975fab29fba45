// The disk is full. A limit of the file size simulates that.

#include "storage_support.h"

#include <csignal>
#include <sys/resource.h>

using namespace velmoext_1_4_8;

namespace
{

// While in scope, no file of this process may grow beyond the size.
class size_limit_t
{
public:
    explicit size_limit_t(rlim_t size) : m_former_action(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit = {size, m_former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~size_limit_t()
    {
        setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_former_action);
    }
    size_limit_t(const size_limit_t&) = delete;
    size_limit_t& operator=(const size_limit_t&) = delete;

private:
    void (*m_former_action)(int);
    rlimit m_former = {};
};

class storage_full_disk_test : public storage_test_t
{
protected:
    static constexpr int old_messages = 1000;

    // Creates a log that grows when it is written again, because nothing in it is indented.
    std::size_t make_dense_log() const
    {
        std::string log = "<log>";
        for (int i = 0; i < old_messages; ++i)
            log += "<msg><type>" + std::to_string(i) + "</type></msg>";
        log += "</log>";
        m_folder.write("log.xml", log);
        return log.size();
    }

    static std::wstring numbers(int count)
    {
        std::wstring types;
        for (int i = 0; i < count; ++i)
            types += std::to_wstring(i) + L";";
        return types;
    }

    std::size_t log_size() const { return std::filesystem::file_size(m_folder.name("log.xml")); }
};

} // namespace

TEST_F(storage_full_disk_test, a_start_that_cannot_carry_all_over_returns_false_and_keeps_the_copy)
{
    const std::size_t size = make_dense_log();
    const std::string before = m_folder.read("log.xml");
    const storage_ptr_t storage = get();
    testing::internal::CaptureStderr();
    {
        const size_limit_t limit(size + 100);
        EXPECT_FALSE(storage->start_recording());
        EXPECT_FALSE(storage->start_recording()) << "it did not count as recording";
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(m_folder.read("log.xml.tmp"), before);
    EXPECT_TRUE(storage->start_recording());
    record(storage, L"new");
    storage->stop_recording();
    EXPECT_EQ(types_in(), numbers(old_messages) + L"new;");
    EXPECT_FALSE(m_folder.has("log.xml.tmp"));
}

TEST_F(storage_full_disk_test, messages_that_one_start_could_not_carry_over_are_found_by_another)
{
    const std::size_t size = make_dense_log();
    {
        const size_limit_t limit(size + 100);
        EXPECT_FALSE(get()->start_recording());
    }
    record_all(L"n");
    EXPECT_EQ(types_in(), numbers(old_messages) + L"n;");
}

TEST_F(storage_full_disk_test, a_log_without_room_for_its_copy_is_left_alone)
{
    const std::size_t size = make_dense_log();
    const std::string before = m_folder.read("log.xml");
    {
        const size_limit_t limit(size - 1);
        EXPECT_FALSE(get()->start_recording());
    }
    EXPECT_EQ(m_folder.read("log.xml"), before);
    EXPECT_FALSE(m_folder.has("log.xml.tmp"));
}

TEST_F(storage_full_disk_test, a_log_in_the_written_form_needs_no_room_for_its_old_messages)
{
    make_dense_log();
    record_all(L"");
    {
        const size_limit_t limit(0);
        const storage_ptr_t storage = get();
        EXPECT_TRUE(storage->start_recording());
        EXPECT_TRUE(storage->stop_recording());
    }
    EXPECT_EQ(types_in(), numbers(old_messages));
}

TEST_F(storage_full_disk_test, a_new_log_stays_though_nothing_can_be_written_into_it)
{
    {
        const size_limit_t limit(0);
        const storage_ptr_t storage = get();
        EXPECT_TRUE(storage->start_recording());
        EXPECT_TRUE(storage->stop_recording());
    }
    EXPECT_TRUE(m_folder.has("log.xml"));
    record_all(L"a");
    EXPECT_EQ(types_in(), L"a;");
}

TEST_F(storage_full_disk_test, a_recording_ended_by_a_full_disk_keeps_all_earlier_messages)
{
    make_dense_log();
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    testing::internal::CaptureStderr();
    {
        const size_limit_t limit(log_size() + 20000);
        for (int i = old_messages; i < 3 * old_messages; ++i)
            record(storage, std::to_wstring(i));
    }
    record(storage, L"after the disk had room again");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    const std::wstring types = types_in();
    EXPECT_EQ(numbers(3 * old_messages).substr(0, types.size()), types);
    EXPECT_GT(types.size(), numbers(old_messages + 100).size());
    record_all(L"n");
    EXPECT_EQ(types_in(), types + L"n;");
}

TEST_F(storage_full_disk_test, a_stop_on_a_full_disk_loses_only_the_last_chunk)
{
    make_dense_log();
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    testing::internal::CaptureStderr();
    {
        const size_limit_t limit(log_size());
        record(storage, L"lost");
        EXPECT_TRUE(storage->stop_recording());
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(types_in(), numbers(old_messages));
    record_all(L"n");
    EXPECT_EQ(types_in(), numbers(old_messages) + L"n;");
}

// Starts that fail half-way: libxml2 runs out of memory, or no descriptor is left. Also the end of
// a recording on a thread without memory.

#include "failing_allocations.h"
#include "process_support.h"
#include "storage/file_descriptor.h"
#include "storage_support.h"

#include <fcntl.h>
#include <functional>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

using namespace velmoext_1_4_8;

namespace
{

// While in scope, libxml2's allocations fail after that many successes.
class xml_memory_limit_t : failing_allocations_t
{
public:
    explicit xml_memory_limit_t(long successes)
        : failing_allocations_t(memory_t::libxml2, extent_t::rest, successes)
    {}
};

int lowest_free_descriptor()
{
    const int descriptor = dup(STDERR_FILENO);
    close(descriptor);
    return descriptor;
}

// While in scope, this process can open only that many more descriptors.
class descriptor_limit_t
{
public:
    explicit descriptor_limit_t(int free_descriptors)
    {
        getrlimit(RLIMIT_NOFILE, &m_former);
        const rlimit limit = {static_cast<rlim_t>(lowest_free_descriptor() + free_descriptors),
                              m_former.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~descriptor_limit_t() { setrlimit(RLIMIT_NOFILE, &m_former); }
    descriptor_limit_t(const descriptor_limit_t&) = delete;
    descriptor_limit_t& operator=(const descriptor_limit_t&) = delete;

private:
    rlimit m_former = {};
};

// The first use of libxml2 on a thread needs memory.
void run_on_thread_without_memory(const std::function<void()>& action)
{
    std::thread([&] {
        const failing_allocations_t none(memory_t::cxx, extent_t::rest, 0);
        action();
    }).join();
}

class storage_failure_test : public storage_test_t
{
protected:
    // Returns false also if the start throws.
    static bool starts(const storage_ptr_t& storage)
    {
        try {
            return storage->start_recording();
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
};

} // namespace

TEST_F(storage_failure_test, a_start_returns_and_can_be_stopped_when_libxml2_runs_out_of_memory)
{
    const storage_ptr_t storage = get();
    record_all(L"a", "warm up.xml");
    bool is_started = false;
    int failures = 0;
    for (long successes = 0; !is_started; ++successes) {
        {
            const xml_memory_limit_t limit(successes);
            is_started = storage->start_recording();
        }
        failures += is_started ? 0 : 1;
        record(storage, L"x");
        EXPECT_TRUE(storage->stop_recording());
        EXPECT_FALSE(m_folder.has("log.xml.tmp"));
    }
    EXPECT_GE(failures, 3) << "the buffer, the writer, the element";
    std::filesystem::remove(m_folder.name("log.xml"));
    record_all(L"b");
    EXPECT_EQ(types_in(), L"b;");
}

TEST_F(storage_failure_test, a_start_that_runs_out_of_memory_loses_no_old_message)
{
    for (const std::string& old : {log_of(message_of("a")), foreign_log({"a"})})
        for (const char* const leaf : {"log.xml", "log.xml.tmp"}) {
            bool is_started = false;
            for (long successes = 0; !is_started; ++successes) {
                std::filesystem::remove(m_folder.name("log.xml"));
                m_folder.write(leaf, old);
                const storage_ptr_t storage = get();
                {
                    const xml_memory_limit_t limit(successes);
                    is_started = starts(storage);
                }
                storage->stop_recording();
                record_all(L"b");
                EXPECT_EQ(types_in(), L"a;b;") << leaf << successes;
            }
        }
}

TEST_F(storage_failure_test,
       a_start_that_runs_out_of_memory_leaves_all_messages_in_the_log_or_the_copy)
{
    const std::wstring types = L"abcdefghijklmnopqrst";
    int failures = 0;
    for (long successes = 2; successes < 199; ++successes) {
        std::filesystem::remove(m_folder.name("log.xml"));
        std::filesystem::remove(m_folder.name("log.xml.tmp"));
        record_all(types);
        std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
        const storage_ptr_t storage = get();
        {
            const xml_memory_limit_t limit(successes);
            failures += starts(storage) ? 0 : 1;
        }
        storage->stop_recording();
        record_all(L"");
        EXPECT_EQ(types_in().size(), 2 * types.size()) << successes;
    }
    EXPECT_GT(failures, 10);
}

TEST_F(storage_failure_test, a_refused_start_removes_no_file_but_its_own)
{
    const std::string others = m_folder.name("log.xml (deleted)");
    file_descriptor_t file;
    ASSERT_TRUE(file.open(false, basekit2::path_t(m_folder.wide_name("log.xml"))));
    std::filesystem::remove(m_folder.name("log.xml"));
    m_folder.write("log.xml (deleted)", "");
    file.close();
    EXPECT_TRUE(std::filesystem::exists(others));
}

TEST_F(storage_failure_test, a_child_that_runs_out_of_memory_at_its_first_message_can_continue)
{
    const int failed = 1;
    const int thrown = 2;
    int outcome = failed;
    for (long successes = 0; (outcome & failed) != 0; ++successes) {
        std::filesystem::remove(m_folder.name("log.xml"));
        const storage_ptr_t storage = get();
        ASSERT_TRUE(storage->start_recording());
        const signal_t has_stopped;
        const pid_t child = fork();
        if (child == 0) {
            has_stopped.wait();
            const message_ptr_t message = make_flagged(L"b");
            try {
                const failing_allocations_t failing(memory_t::cxx, extent_t::one, successes);
                outcome = 0;
                storage->on_message(nullptr, message);
            } catch (const std::bad_alloc&) {
                outcome = thrown;
            }
            outcome |= failing_allocations_t::has_failed() ? failed : 0;
            record(storage, L"c");
            storage->stop_recording();
            _exit(outcome);
        }
        storage->stop_recording();
        has_stopped.send();
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        outcome = WEXITSTATUS(status);
        EXPECT_EQ(types_in(), (outcome & thrown) != 0 ? L"c;" : L"b;c;") << successes;
    }
}

TEST_F(storage_failure_test, a_copy_that_cannot_be_opened_leaves_the_storage_as_if_recording)
{
    record_all(L"a");
    std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
    const storage_ptr_t storage = get();
    {
        const descriptor_limit_t limit(1);
        EXPECT_FALSE(storage->start_recording());
    }
    EXPECT_TRUE(m_folder.has("log.xml.tmp"));
    EXPECT_TRUE(storage->start_recording()) << "a start while recording changes nothing";
    EXPECT_TRUE(storage->stop_recording());
    record_all(L"b");
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_failure_test, nothing_is_written_into_a_file_that_reuses_a_closed_descriptor)
{
    record_all(L"a");
    std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
    const storage_ptr_t storage = get();
    {
        const descriptor_limit_t limit(1);
        EXPECT_FALSE(storage->start_recording());
    }
    const int precious =
        open(m_folder.name("precious").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    for (int i = 0; i < 1000; ++i)
        record(storage, std::wstring(100, L'x'));
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(lseek(precious, 0, SEEK_END), 0);
    close(precious);
}

TEST_F(storage_failure_test, without_enough_descriptors_no_old_message_is_lost)
{
    for (const std::string& old : {log_of(message_of("a")), foreign_log({"a"})})
        for (const char* const leaf : {"log.xml", "log.xml.tmp"})
            for (int free_descriptors = 0; free_descriptors < 7; ++free_descriptors) {
                std::filesystem::remove(m_folder.name("log.xml"));
                m_folder.write(leaf, old);
                const storage_ptr_t storage = get();
                bool is_started = false;
                {
                    const descriptor_limit_t limit(free_descriptors);
                    is_started = storage->start_recording();
                }
                EXPECT_TRUE(is_started || m_folder.read(leaf) == old) << leaf << free_descriptors;
                EXPECT_TRUE(is_started || free_descriptors < 6);
                storage->stop_recording();
                record_all(L"b");
                EXPECT_EQ(types_in(), L"a;b;") << leaf << free_descriptors;
            }
}

TEST_F(storage_failure_test, a_failed_operation_leaves_no_descriptor_open)
{
    const int before = lowest_free_descriptor();
    for (int free_descriptors = 0; free_descriptors < 4; ++free_descriptors) {
        record_all(L"a");
        const descriptor_limit_t limit(free_descriptors);
        const storage_ptr_t storage = get();
        storage->start_recording();
        storage->stop_recording();
        storage->start_reading();
        storage->stop_reading();
    }
    EXPECT_EQ(lowest_free_descriptor(), before);
}

TEST_F(storage_failure_test, a_storage_that_is_read_repeatedly_leaves_no_descriptor_open)
{
    record_all(L"a");
    const int before = lowest_free_descriptor();
    storage_ptr_t storage = get();
    EXPECT_TRUE(storage->start_reading());
    EXPECT_TRUE(storage->start_reading());
    EXPECT_NE(lowest_free_descriptor(), before);
    storage.reset();
    EXPECT_EQ(lowest_free_descriptor(), before);
}

TEST_F(storage_failure_test, a_stop_that_ran_out_of_memory_can_be_repeated)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    bool has_thrown = false;
    run_on_thread_without_memory([&] {
        try {
            storage->stop_recording();
        } catch (const std::bad_alloc&) {
            has_thrown = true;
        }
    });
    EXPECT_TRUE(has_thrown);
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"a;");
}

TEST_F(storage_failure_test, a_last_owner_that_runs_out_of_memory_releases_the_log)
{
    storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    run_on_thread_without_memory([&] { storage.reset(); });
    record_all(L"b");
    const std::wstring types = types_in();
    EXPECT_EQ(types.substr(types.size() - 2), L"b;");
}

TEST_F(storage_failure_test, a_fork_on_a_thread_without_memory_loses_nothing)
{
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    record(storage, L"a");
    int status = -1;
    run_on_thread_without_memory([&] { status = status_of_child([] { return 0; }); });
    EXPECT_TRUE(has_exited_with(status, 0));
    record(storage, L"b");
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"a;b;");
}

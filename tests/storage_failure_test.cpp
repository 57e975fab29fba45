// Starts that fail half-way: no memory for libxml2, no descriptor left.

#include "storage_support.h"

#include <libxml/xmlmemory.h>

#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace velmoext_1_4_8;

namespace
{

// How many allocations of libxml2 still succeed; a negative number is never used up.
long xml_allocations_left = -1;

bool may_allocate()
{
    if (xml_allocations_left > 0)
        --xml_allocations_left;
    return xml_allocations_left != 0;
}

// libxml2 asks for functions of C's kind.
void* xml_malloc(std::size_t size)
{
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc)
    return may_allocate() ? std::malloc(size) : nullptr;
}

void* xml_realloc(void* memory, std::size_t size)
{
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc)
    return may_allocate() ? std::realloc(memory, size) : nullptr;
}

char* xml_strdup(const char* text)
{
    return may_allocate() ? strdup(text) : nullptr;
}

// libxml2 takes its functions once, before anything else of it is used.
const int is_set_up = xmlMemSetup(std::free, xml_malloc, xml_realloc, xml_strdup);

// No descriptor beyond the next free ones can be had as long as this lives.
class descriptor_limit_t
{
public:
    explicit descriptor_limit_t(int free_ones)
    {
        getrlimit(RLIMIT_NOFILE, &m_former);
        const int lowest = dup(STDERR_FILENO);
        close(lowest);
        const rlimit limit = {static_cast<rlim_t>(lowest + free_ones), m_former.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~descriptor_limit_t() { setrlimit(RLIMIT_NOFILE, &m_former); }
    descriptor_limit_t(const descriptor_limit_t&) = delete;
    descriptor_limit_t& operator=(const descriptor_limit_t&) = delete;

private:
    rlimit m_former = {};
};

typedef storage_test_t storage_failure_test;

} // namespace

// Where libxml2 has no memory to note an element's beginning, it forgets what it already made.
// The leak sanitizer asks for its exceptions under this name.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions()
{
    return "leak:xmlTextWriterStartElement";
}

TEST_F(storage_failure_test, a_start_without_memory_for_libxml2_answers_and_can_be_stopped)
{
    ASSERT_EQ(is_set_up, 0);
    const storage_ptr storage = get();
    record_all(L"a", "warm up.xml");
    testing::internal::CaptureStderr(); // libxml2 tells of its own lack of memory
    bool is_started = false;
    int failures = 0;
    for (long successes = 0; !is_started; ++successes) {
        xml_allocations_left = successes + 1;
        is_started = storage->start_recording();
        xml_allocations_left = -1;
        failures += is_started ? 0 : 1;
        record(storage, L"x");
        EXPECT_TRUE(storage->stop_recording());
        EXPECT_FALSE(m_folder.has("log.xml.tmp"));
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GE(failures, 3) << "the buffer, the writer, the element";
    std::filesystem::remove(m_folder.name("log.xml"));
    record_all(L"b");
    EXPECT_EQ(types_in(), L"b;");
}

TEST_F(storage_failure_test, a_start_that_fails_without_memory_removes_the_copy_that_it_made)
{
    record_all(L"a");
    const storage_ptr storage = get();
    testing::internal::CaptureStderr();
    xml_allocations_left = 1;
    EXPECT_FALSE(storage->start_recording());
    xml_allocations_left = -1;
    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(m_folder.has("log.xml.tmp"));
    EXPECT_EQ(m_folder.read("log.xml"), "");
}

TEST_F(storage_failure_test, a_start_that_fails_without_memory_keeps_a_copy_that_was_left_behind)
{
    record_all(L"a");
    std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
    const storage_ptr storage = get();
    testing::internal::CaptureStderr();
    xml_allocations_left = 1;
    EXPECT_FALSE(storage->start_recording());
    xml_allocations_left = -1;
    testing::internal::GetCapturedStderr();
    storage->stop_recording();
    record_all(L"b");
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(storage_failure_test, what_is_carried_over_without_memory_is_whole_or_kept_in_the_copy)
{
    const std::wstring types = L"abcdefghijklmnopqrst";
    testing::internal::CaptureStderr();
    int failures = 0;
    for (long successes = 3; successes < 200; ++successes) {
        std::filesystem::remove(m_folder.name("log.xml"));
        std::filesystem::remove(m_folder.name("log.xml.tmp"));
        record_all(types);
        std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
        const storage_ptr storage = get();
        xml_allocations_left = successes;
        failures += storage->start_recording() ? 0 : 1;
        xml_allocations_left = -1;
        storage->stop_recording();
        record_all(L"");
        EXPECT_EQ(types_in().size(), 2 * types.size()) << successes;
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GT(failures, 10);
}

TEST_F(storage_failure_test, a_copy_that_cannot_be_opened_leaves_the_storage_as_if_recording)
{
    record_all(L"a");
    std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
    const storage_ptr storage = get();
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

TEST_F(storage_failure_test, nothing_is_written_into_a_file_that_got_the_closed_descriptor)
{
    record_all(L"a");
    std::filesystem::rename(m_folder.name("log.xml"), m_folder.name("log.xml.tmp"));
    const storage_ptr storage = get();
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

TEST_F(storage_failure_test, no_descriptor_is_left_open_by_what_failed)
{
    const auto lowest_free = [] {
        const int descriptor = dup(STDERR_FILENO);
        close(descriptor);
        return descriptor;
    };
    const int before = lowest_free();
    for (int free_ones = 0; free_ones < 4; ++free_ones) {
        record_all(L"a");
        const descriptor_limit_t limit(free_ones);
        const storage_ptr storage = get();
        storage->start_recording();
        storage->stop_recording();
        storage->start_reading();
        storage->stop_reading();
    }
    EXPECT_EQ(lowest_free(), before);
}

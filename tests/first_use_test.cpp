// A thread uses the library for the first time while no memory can be allocated: libxml2 and the C
// library would end the process.

#include "process_support.h"
#include "storage_support.h"

#include <cerrno>
#include <cstddef>
#include <functional>
#include <new>
#include <thread>

// The C library's own functions, under its names for them.
extern "C" {
void* __libc_malloc(std::size_t size);                    // NOLINT(readability-identifier-naming)
void* __libc_calloc(std::size_t count, std::size_t size); // NOLINT(readability-identifier-naming)
void* __libc_realloc(void* memory, std::size_t size);     // NOLINT(readability-identifier-naming)
}

namespace
{

thread_local bool has_memory = true;

template <typename Allocate>
void* allocate(const Allocate& c_allocate)
{
    if (has_memory)
        return c_allocate();
    errno = ENOMEM;
    return nullptr;
}

} // namespace

extern "C" {
__attribute__((visibility("default"))) void* malloc(std::size_t size)
{
    return allocate([=] { return __libc_malloc(size); });
}

__attribute__((visibility("default"))) void* calloc(std::size_t nmemb, std::size_t size)
{
    return allocate([=] { return __libc_calloc(nmemb, size); });
}

__attribute__((visibility("default"))) void* realloc(void* ptr, std::size_t size)
{
    return allocate([=] { return __libc_realloc(ptr, size); });
}
}

using namespace velmoext_1_4_8;

namespace
{

enum outcome_t
{
    returned,
    threw
};

// Returns the exit status of a process that runs `before`, then the operation on a new thread
// without memory.
int status_without_memory(
    const std::function<void()>& operation, const std::function<void()>& before = [] {})
{
    return status_of_child([&] {
        before();
        int outcome = returned;
        std::thread([&] {
            has_memory = false;
            try {
                operation();
            } catch (const std::bad_alloc&) {
                outcome = threw;
            }
            has_memory = true;
        }).join();
        return outcome;
    });
}

class first_use_test : public storage_test_t
{
protected:
    storage_ptr_t m_storage = get();
    std::function<void()> m_start = [this] {
        m_storage->start_recording();
    };
};

} // namespace

TEST_F(first_use_test, without_memory_no_message_is_written)
{
    const message_ptr_t message = make_flagged(L"t");
    EXPECT_TRUE(has_exited_with(
        status_without_memory([&] { string_message_serializer_t::message_to_xml_string(message); }),
        threw));
}

TEST_F(first_use_test, without_memory_no_message_is_read)
{
    const std::wstring text = L"<a/>";
    EXPECT_TRUE(has_exited_with(
        status_without_memory([&] { string_message_serializer_t::xml_string_to_message(text); }),
        threw));
}

TEST_F(first_use_test, without_memory_no_recording_is_started)
{
    EXPECT_TRUE(has_exited_with(status_without_memory(m_start), threw));
}

TEST_F(first_use_test, without_memory_no_message_is_recorded)
{
    const message_ptr_t message = make_flagged(L"t");
    const auto record = [&] {
        m_storage->on_message(boost::shared_ptr<velmo_ex_t>(), message);
    };
    EXPECT_TRUE(has_exited_with(status_without_memory(record, m_start), threw));
}

TEST_F(first_use_test, without_memory_a_recording_is_not_ended)
{
    const auto stop = [&] {
        m_storage->stop_recording();
    };
    EXPECT_TRUE(has_exited_with(status_without_memory(stop, m_start), threw));
}

TEST_F(first_use_test, without_memory_the_last_owner_still_releases_a_recording)
{
    const auto release = [&] {
        m_storage.reset();
    };
    EXPECT_TRUE(has_exited_with(status_without_memory(release, m_start), returned));
}

TEST_F(first_use_test, without_memory_a_process_that_records_can_still_fork)
{
    const auto fork_once = [] {
        EXPECT_TRUE(has_exited_with(status_of_child([] { return 0; }), 0));
    };
    EXPECT_TRUE(has_exited_with(status_without_memory(fork_once, m_start), returned));
}

// Lets every single allocation of an operation fail once. The failure must pass out as
// std::bad_alloc, leave no lock behind and nothing half done; leaks are the sanitizers' to find.

#include "log_sax_reader.h"
#include "scratch_folder.h"
#include "support.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

using namespace velmoext_1_4_8;

namespace
{

// How many allocations of this thread still succeed; a negative number is never used up.
thread_local long allocations_left = -1;

class failing_allocations_t
{
public:
    explicit failing_allocations_t(long successes) { allocations_left = successes; }
    ~failing_allocations_t() { allocations_left = -1; }
    failing_allocations_t(const failing_allocations_t&) = delete;
    failing_allocations_t& operator=(const failing_allocations_t&) = delete;
};

// Calls the step with its first allocation failing, then its second, and so on until it succeeds;
// answers how often it failed. After each failure it calls the check.
template <typename Step, typename Check>
int fail_each_allocation(const Step& step, const Check& check)
{
    for (int successes = 0;; ++successes) {
        try {
            const failing_allocations_t failing(successes);
            step();
            return successes;
        } catch (const std::bad_alloc&) {
        }
        check();
    }
}

} // namespace

// Not inlined: g++ would take malloc() and free() for two halves that do not belong together.
__attribute__((noinline)) void* operator new(std::size_t size)
{
    if (allocations_left == 0)
        throw std::bad_alloc();
    if (allocations_left > 0)
        --allocations_left;
    // These are the operators that all else is to use instead of C's functions.
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc)
    if (void* const memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

__attribute__((noinline)) void operator delete(void* memory) noexcept
{
    std::free(memory); // NOLINT(cppcoreguidelines-no-malloc)
}

__attribute__((noinline)) void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory); // NOLINT(cppcoreguidelines-no-malloc)
}

TEST(allocation_test, an_object_that_could_not_be_made_leaves_no_entry)
{
    const std::wstring id = velmo_ex_t::generate_id(L"a long enough id to be allocated ");
    const std::wstring prefix = L"a long enough prefix to be allocated";
    boost::shared_ptr<velmo_ex_t> ex;
    const int failures =
        fail_each_allocation([&] { ex = velmo_ex_t::get(id, prefix); }, [&] { EXPECT_FALSE(ex); });
    EXPECT_GE(failures, 4) << "the object, its owner, its prefix, its entry";
    ASSERT_TRUE(ex) << "an entry without an object was left behind";
    EXPECT_EQ(ex->get_prefix(), prefix);
}

TEST(allocation_test, an_id_that_could_not_be_generated_leaves_no_lock)
{
    const std::wstring base = L"a long enough base to be allocated ";
    std::wstring id;
    EXPECT_GE(fail_each_allocation([&] { id = velmo_ex_t::generate_id(base); }, [] {}), 1);
    EXPECT_EQ(id.compare(0, base.size(), base), 0);
}

TEST(allocation_test, a_handler_that_could_not_be_pushed_leaves_the_stack_unchanged)
{
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"allocation_test."), L"");
    const auto first = boost::make_shared<base_handler_t>();
    const auto second = boost::make_shared<base_handler_t>();
    ex->push_handler(first);
    EXPECT_EQ(fail_each_allocation([&] { ex->push_handler(second); }, [] {}), 1);
    EXPECT_EQ(ex->pop_handler(), second);
    EXPECT_EQ(ex->pop_handler(), first);
    EXPECT_FALSE(ex->pop_handler());
}

TEST(allocation_test, a_message_that_could_not_be_written_is_written_next_time)
{
    const auto message = make_message(
        make_content({{L"tool", L"x"}}, {{L"name \xE9", L"value"}}, {{L"e", L"text"}}));
    std::wstring text;
    EXPECT_GE(fail_each_allocation(
                  [&] { text = string_message_serializer_t::message_to_xml_string(message); },
                  [&] { EXPECT_TRUE(text.empty()); }),
              3);
    EXPECT_TRUE(string_message_serializer_t::xml_string_to_message(text));
}

TEST(allocation_test, a_message_that_could_not_be_read_is_read_next_time)
{
    const std::wstring text = L"<msg tool='a long source that is allocated'>"
                              L"<arg name='a long name that is allocated'>and its text</arg>"
                              L"<arg/><e>x</e><type>a long type that is allocated</type></msg>";
    message_ptr message;
    EXPECT_GE(fail_each_allocation(
                  [&] { message = string_message_serializer_t::xml_string_to_message(text); },
                  [&] { EXPECT_FALSE(message); }),
              6);
    EXPECT_TRUE(message);
}

TEST(allocation_test, a_recording_that_could_not_start_leaves_the_log_to_others_and_loses_nothing)
{
    const scratch_folder_t folder;
    folder.write("log.xml",
                 "<log><msg source='a long source that is allocated'><arg name='n'>x</arg>"
                 "<type>a long type that is allocated</type></msg></log>");
    const auto storage = messages_storage_t::get(basekit2::path_t(folder.wide_name("log.xml")));
    const auto other = messages_storage_t::get(basekit2::path_t(folder.wide_name("./log.xml")));
    bool is_started = false;
    const int failures = fail_each_allocation([&] { is_started = storage->start_recording(); },
                                              [&] {
                                                  EXPECT_TRUE(other->start_recording())
                                                      << "the lock was kept";
                                                  EXPECT_TRUE(other->stop_recording());
                                              });
    EXPECT_GE(failures, 6);
    EXPECT_TRUE(is_started);
    storage->stop_recording();
    EXPECT_NE(folder.read("log.xml").find("<type>a long type that is allocated</type>"),
              std::string::npos);
}

TEST(allocation_test, a_log_that_could_not_be_read_is_read_next_time)
{
    const std::string log = "<log><msg source='a long source that is allocated'>"
                            "<arg name='a long name that is allocated'>and its text</arg><arg/>"
                            "<severity>INFO</severity><type>a long type that is allocated</type>"
                            "<a_long_element_name_that_is_allocated>x"
                            "</a_long_element_name_that_is_allocated></msg></log>";
    int delivered = 0;
    log_sax_reader reader;
    reader.set_callback([&](message_ptr) { ++delivered; });
    EXPECT_GE(fail_each_allocation([&] { reader.parse(log); }, [&] { EXPECT_EQ(delivered, 0); }),
              6);
    EXPECT_EQ(delivered, 1);
}

// Thread safety: components of one process share a few extension objects.

#include "run_threads.h"
#include "support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <set>

using namespace velmoext_1_4_8;

namespace
{

const int thread_count = 8;
const auto duration = std::chrono::seconds(3);

// Detects two simultaneous calls, by ThreadSanitizer and by its own count.
class exclusive_handler_t : public base_handler_t
{
public:
    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> ex, message_ptr_t msg) override
    {
        EXPECT_EQ(++m_active_calls, 1);
        EXPECT_TRUE(ex);
        EXPECT_TRUE(msg);
        ++m_seen;
        --m_active_calls;
        return false;
    }

    int seen() const { return m_seen; }

private:
    std::atomic<int> m_active_calls{0};
    int m_seen = 0; ///< guarded by the extension object that delivers
};

} // namespace

TEST(threads_test, all_threads_may_create_use_and_release_objects_of_few_ids)
{
    const std::wstring base = velmo_ex_t::generate_id(L"threads_test.");
    const auto end = std::chrono::steady_clock::now() + duration;
    std::atomic<long> delivered{0};
    run_threads(thread_count, [&](int thread) {
        std::minstd_rand random(static_cast<unsigned>(thread) + 1);
        const message_ptr_t message = make_message(L"t", message_t::info);
        while (std::chrono::steady_clock::now() < end) {
            const std::wstring id = base + std::to_wstring(random() % 4);
            const boost::shared_ptr<velmo_ex_t> ex = velmo_ex_t::get(id, L"p");
            if (!ex)
                continue;
            ex->push_handler(boost::make_shared<exclusive_handler_t>());
            deliver(ex, message);
            ++delivered;
            if (random() % 2 == 0)
                ex->pop_handler();
            EXPECT_NE(velmo_ex_t::generate_id(base), id);
        }
    });
    EXPECT_GT(delivered.load(), thread_count);
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(velmo_ex_t::get(base + std::to_wstring(i), L"")) << "an entry remains";
}

TEST(threads_test, ids_that_all_threads_generate_at_once_are_different)
{
    const std::size_t ids_of_each = 10000;
    std::vector<std::vector<std::wstring>> ids(thread_count);
    run_threads(thread_count, [&](int thread) {
        for (std::size_t i = 0; i < ids_of_each; ++i)
            ids[static_cast<std::size_t>(thread)].push_back(velmo_ex_t::generate_id(L"job"));
    });
    std::set<std::wstring> different;
    for (const auto& thread_ids : ids)
        different.insert(thread_ids.begin(), thread_ids.end());
    EXPECT_EQ(different.size(), thread_count * ids_of_each);
}

TEST(threads_test, one_object_sees_the_messages_of_all_threads_one_at_a_time)
{
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"threads_test."), L"");
    const auto handler = boost::make_shared<exclusive_handler_t>();
    ex->push_handler(handler);
    const int messages = 500;
    run_threads(thread_count, [&](int) {
        for (int i = 0; i < messages; ++i)
            deliver(ex, make_message(L"t"));
    });
    EXPECT_EQ(handler->seen(), thread_count * messages);
}

TEST(threads_test, a_handler_that_releases_objects_during_other_destructions_does_not_deadlock)
{
    struct owning_handler_t : base_handler_t
    {
        explicit owning_handler_t(boost::shared_ptr<velmo_ex_t> owned) : m_owned(std::move(owned))
        {}
        boost::shared_ptr<velmo_ex_t> m_owned;
    };
    run_threads(thread_count, [](int) {
        for (int i = 0; i < 2000; ++i) {
            boost::shared_ptr<velmo_ex_t> chain;
            for (int length = 0; length < 4; ++length) {
                const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"chain."), L"");
                ex->push_handler(boost::make_shared<owning_handler_t>(chain));
                chain = ex;
            }
        }
    });
    EXPECT_TRUE(velmo_ex_t::get(velmo_ex_t::generate_id(L"chain."), L""));
}

TEST(threads_test, the_first_use_in_a_process_may_come_from_all_threads_at_once)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto use = [] {
        const message_ptr_t message = make_message(L"t");
        run_threads(thread_count, [&](int) {
            string_message_serializer_t::xml_string_to_message(
                string_message_serializer_t::message_to_xml_string(message));
        });
        std::_Exit(0);
    };
    EXPECT_EXIT(use(), testing::ExitedWithCode(0), "");
}

TEST(threads_test, one_message_is_encoded_by_all_threads_at_once)
{
    const message_ptr_t message = make_message(make_content({{L"tool", L"x"}}, {{L"\xE9", L"&"}}));
    const std::wstring text = string_message_serializer_t::message_to_xml_string(message);
    run_threads(thread_count, [&](int) {
        for (int i = 0; i < 500; ++i) {
            EXPECT_EQ(string_message_serializer_t::message_to_xml_string(message), text);
            EXPECT_TRUE(string_message_serializer_t::xml_string_to_message(text));
        }
    });
}

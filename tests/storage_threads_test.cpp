#include "run_threads.h"
#include "storage_support.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <thread>

using namespace velmoext_1_4_8;

namespace
{

typedef storage_test_t storage_threads_test;

boost::shared_ptr<velmo_ex_t> make_ex()
{
    return velmo_ex_t::get(velmo_ex_t::generate_id(L"storage_threads_test."), L"");
}

// Runs an action for each message that is delivered.
class action_handler_t : public base_handler_t
{
public:
    explicit action_handler_t(std::function<void()> action) : m_action(std::move(action)) {}

    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t /*msg*/) override
    {
        m_action();
        return false;
    }

private:
    std::function<void()> m_action;
};

boost::shared_ptr<velmo_ex_t> make_ex_with_action(std::function<void()> action)
{
    auto ex = make_ex();
    ex->push_handler(boost::make_shared<action_handler_t>(std::move(action)));
    return ex;
}

} // namespace

TEST_F(storage_threads_test, threads_that_record_at_once_write_whole_messages_in_their_own_order)
{
    const int recorders = 8;
    const int messages = 500;
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_recording());
    std::atomic<int> recording{recorders};
    run_threads(recorders + 2, [&](int thread) {
        if (thread < recorders) {
            for (int i = 0; i < messages; ++i)
                record(storage, std::to_wstring(thread) + L":" + std::to_wstring(i));
            --recording;
        }
        while (recording != 0) {
            EXPECT_EQ(get(), storage);
            EXPECT_TRUE(get("other.xml"));
            EXPECT_TRUE(storage->start_recording());
        }
    });
    storage->stop_recording();

    std::wstring types = types_in();
    std::map<wchar_t, int> next;
    int count = 0;
    for (std::size_t end = types.find(L';'); end != std::wstring::npos; end = types.find(L';')) {
        const wchar_t thread = types.at(0);
        EXPECT_EQ(types.substr(2, end - 2), std::to_wstring(next[thread]++));
        types.erase(0, end + 1);
        ++count;
    }
    EXPECT_EQ(count, recorders * messages);
}

TEST_F(storage_threads_test, all_threads_may_get_use_and_release_storages_of_few_paths)
{
    run_threads(8, [&](int thread) {
        for (int i = 0; i < 200; ++i) {
            const storage_ptr_t storage = get(std::to_string((thread + i) % 3) + ".xml");
            storage->start_recording();
            record(storage, L"t");
            if (i % 3 == 0)
                storage->stop_recording();
        }
    });
    for (const char* leaf : {"0.xml", "1.xml", "2.xml"}) {
        const storage_ptr_t storage = get(leaf);
        EXPECT_TRUE(storage->start_recording()) << leaf;
        EXPECT_TRUE(storage->stop_recording()) << leaf;
    }
}

TEST_F(storage_threads_test, threads_that_request_one_path_at_once_get_one_storage)
{
    const int count = 8;
    for (int round = 0; round < 200; ++round) {
        std::vector<storage_ptr_t> storages(count);
        run_threads(count, [&](int thread) { storages[static_cast<std::size_t>(thread)] = get(); });
        EXPECT_EQ(std::count(storages.begin(), storages.end(), storages.front()), count);
    }
}

TEST_F(storage_threads_test, a_storage_can_be_replayed_during_the_replay_of_another)
{
    record_all(L"a", "0.xml");
    record_all(L"abc", "1.xml");
    const storage_ptr_t storage = get("0.xml");
    ASSERT_TRUE(storage->start_reading());
    std::wstring types;
    EXPECT_TRUE(storage->replay(
        make_ex_with_action([&] { std::thread([&] { types = replay(get("1.xml")); }).join(); })));
    EXPECT_EQ(types, L"a;b;c;");
}

// An operation that did not wait would end at once.
TEST_F(storage_threads_test, each_operation_of_a_storage_waits_for_the_end_of_its_replay)
{
    const std::function<void(messages_storage_t&)> operations[] = {
        [](messages_storage_t& storage) { storage.start_recording(); },
        [](messages_storage_t& storage) { storage.stop_recording(); },
        [](messages_storage_t& storage) { storage.start_reading(); },
        [](messages_storage_t& storage) { storage.stop_reading(); },
        [](messages_storage_t& storage) { storage.replay(make_ex()); },
        [](messages_storage_t& storage) {
            storage.on_message(nullptr, message_ptr_t());
        }};
    record_all(L"a");
    for (const auto& operation : operations) {
        const storage_ptr_t storage = get();
        ASSERT_TRUE(storage->start_reading());
        std::atomic<bool> has_begun{false};
        std::future<void> other;
        bool has_finished_early = true;
        EXPECT_TRUE(storage->replay(make_ex_with_action([&] {
            other = std::async(std::launch::async, [&] {
                has_begun = true;
                operation(*storage);
            });
            while (!has_begun)
                std::this_thread::yield();
            const auto status = other.wait_for(std::chrono::milliseconds(50));
            has_finished_early = status == std::future_status::ready;
        })));
        other.get();
        EXPECT_FALSE(has_finished_early);
    }
}

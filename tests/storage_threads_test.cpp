#include "run_threads.h"
#include "storage_support.h"

#include <atomic>
#include <map>

using namespace velmoext_1_4_8;

typedef storage_test_t storage_threads_test;

TEST_F(storage_threads_test, threads_that_record_at_once_write_whole_messages_in_their_own_order)
{
    const int recorders = 8;
    const int messages = 500;
    const storage_ptr storage = get();
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

TEST_F(storage_threads_test, storages_of_few_paths_are_got_used_and_released_by_all_threads)
{
    run_threads(8, [&](int thread) {
        for (int i = 0; i < 200; ++i) {
            const storage_ptr storage = get(std::to_string((thread + i) % 3) + ".xml");
            storage->start_recording();
            record(storage, L"t");
            if (i % 3 == 0)
                storage->stop_recording();
        }
    });
    for (const char* leaf : {"0.xml", "1.xml", "2.xml"}) {
        const storage_ptr storage = get(leaf);
        EXPECT_TRUE(storage->start_recording()) << leaf;
        EXPECT_TRUE(storage->stop_recording()) << leaf;
    }
}

TEST_F(storage_threads_test, two_storages_replay_at_the_same_time)
{
    record_all(L"abc", "0.xml");
    record_all(L"abc", "1.xml");
    run_threads(
        2, [&](int thread) { EXPECT_EQ(replay(get(std::to_string(thread) + ".xml")), L"a;b;c;"); });
}

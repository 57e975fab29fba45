// Messages for an extension object whose last owner has released it.

#include "storage_support.h"

#include <cstdlib>
#include <functional>
#include <future>
#include <new>
#include <thread>
#include <utility>

namespace
{

// Runs in the thread's next allocation.
thread_local std::function<void()>* on_allocation = nullptr;

} // namespace

__attribute__((noinline)) void* operator new(std::size_t size)
{
    if (on_allocation != nullptr)
        (*std::exchange(on_allocation, nullptr))();
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

using namespace velmoext_1_4_8;

namespace
{

// Keeps the registry of extension objects locked while in scope: an identifier is being generated
// on another thread. An object without an owner then waits to leave the registry, with its
// handlers.
class locked_registry_t
{
public:
    locked_registry_t()
    {
        m_thread = std::thread([this] {
            const std::wstring base = L"an identifier that is too long for its string object";
            on_allocation = &m_wait;
            velmo_ex_t::generate_id(base);
        });
        m_is_locked.get_future().wait();
    }
    ~locked_registry_t()
    {
        m_may_go_on.set_value();
        m_thread.join();
    }
    locked_registry_t(const locked_registry_t&) = delete;
    locked_registry_t& operator=(const locked_registry_t&) = delete;

private:
    std::promise<void> m_is_locked;
    std::promise<void> m_may_go_on;
    std::function<void()> m_wait = [this] {
        m_is_locked.set_value();
        m_may_go_on.get_future().wait();
    };
    std::thread m_thread;
};

class without_owner_test : public storage_test_t
{
protected:
    // Runs the action with a pointer to an object that has no owner, and the handler if there is
    // one.
    void run_without_owner(const std::function<void(const boost::shared_ptr<velmo_ex_t>&)>& action)
    {
        auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"without_owner_test."), L"");
        if (m_handler)
            ex->push_handler(m_handler);
        const boost::shared_ptr<velmo_ex_t> borrowed(ex.get(), [](velmo_ex_t*) {});
        const boost::weak_ptr<velmo_ex_t> owned = ex;
        std::thread last_owner;
        {
            const locked_registry_t registry;
            last_owner = std::thread([&] { ex.reset(); });
            while (!owned.expired())
                std::this_thread::yield();
            action(borrowed);
        }
        last_owner.join();
    }

    boost::shared_ptr<recording_handler_t> m_handler = boost::make_shared<recording_handler_t>();
};

} // namespace

TEST_F(without_owner_test, a_replay_into_an_object_without_an_owner_throws)
{
    record_all(L"ab");
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_reading());
    run_without_owner([&](const boost::shared_ptr<velmo_ex_t>& borrowed) {
        EXPECT_THROW(storage->replay(borrowed), boost::bad_weak_ptr);
        EXPECT_FALSE(storage->replay(borrowed)) << "the text counts as read";
    });
    EXPECT_TRUE(m_handler->messages().empty());
    EXPECT_TRUE(storage->start_recording());
    EXPECT_TRUE(storage->stop_recording());
    EXPECT_EQ(types_in(), L"a;b;");
}

TEST_F(without_owner_test, a_text_sent_to_an_object_without_an_owner_throws)
{
    run_without_owner([&](const boost::shared_ptr<velmo_ex_t>& borrowed) {
        EXPECT_THROW(say_to(borrowed, L"<msg><type>t</type></msg>"), boost::bad_weak_ptr);
        EXPECT_THROW(say_to(borrowed, L"no message"), boost::bad_weak_ptr);
    });
    EXPECT_TRUE(m_handler->messages().empty());
}

TEST_F(without_owner_test, without_a_handler_nothing_is_thrown)
{
    record_all(L"ab");
    m_handler.reset();
    const storage_ptr_t storage = get();
    ASSERT_TRUE(storage->start_reading());
    run_without_owner([&](const boost::shared_ptr<velmo_ex_t>& borrowed) {
        EXPECT_TRUE(storage->replay(borrowed));
        say_to(borrowed, L"<msg/>");
    });
}

// A host that is not linked with the library loads components that are, independently of each
// other.

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace
{

class component_t
{
public:
    explicit component_t(const char* file) : m_handle(dlopen(file, RTLD_NOW | RTLD_LOCAL))
    {
        if (m_handle == nullptr)
            throw std::runtime_error(dlerror());
    }
    ~component_t() { dlclose(m_handle); }
    component_t(const component_t&) = delete;
    component_t& operator=(const component_t&) = delete;

    void start_receiving(const wchar_t* id) const
    {
        function<void(const wchar_t*)>("start_receiving")(id);
    }
    bool stop_receiving() const { return function<bool()>("stop_receiving")(); }
    std::size_t received_count() const { return function<std::size_t()>("received_count")(); }
    void send_message(const wchar_t* id, const wchar_t* type) const
    {
        function<void(const wchar_t*, const wchar_t*)>("send_message")(id, type);
    }
    int next_number() const { return function<int()>("next_number")(); }

private:
    template <typename Signature>
    Signature* function(const char* name) const
    {
        return reinterpret_cast<Signature*>(dlsym(m_handle, name));
    }

    void* m_handle;
};

} // namespace

TEST(components_test, separately_loaded_components_share_one_registry)
{
    const component_t one(COMPONENT_ONE);
    const component_t two(COMPONENT_TWO);
    one.start_receiving(L"components_test.shared");
    two.send_message(L"components_test.shared", L"t");
    EXPECT_EQ(one.received_count(), 1U);
    two.start_receiving(L"components_test.shared");
    one.send_message(L"components_test.shared", L"t");
    EXPECT_EQ(one.received_count(), 2U);
    EXPECT_EQ(two.received_count(), 1U);
    EXPECT_TRUE(two.stop_receiving());
    EXPECT_TRUE(one.stop_receiving());
}

TEST(components_test, separately_loaded_components_get_different_numbers)
{
    const component_t one(COMPONENT_ONE);
    const component_t two(COMPONENT_TWO);
    const int first = one.next_number();
    EXPECT_EQ(two.next_number(), first + 1);
    EXPECT_EQ(one.next_number(), first + 2);
}

TEST(components_test, numbers_continue_after_the_last_component_is_unloaded)
{
    const int last = component_t(COMPONENT_ONE).next_number();
    EXPECT_EQ(component_t(COMPONENT_TWO).next_number(), last + 1);
}

TEST(components_test, a_component_whose_handler_was_popped_can_be_unloaded)
{
    const component_t remaining(COMPONENT_ONE);
    remaining.start_receiving(L"components_test.unloaded");
    {
        const component_t unloaded(COMPONENT_TWO);
        unloaded.start_receiving(L"components_test.unloaded");
        remaining.send_message(L"components_test.unloaded", L"t");
        EXPECT_EQ(unloaded.received_count(), 1U);
        EXPECT_TRUE(unloaded.stop_receiving());
    }
    EXPECT_EQ(dlopen(COMPONENT_TWO, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it was not unloaded";
    remaining.send_message(L"components_test.unloaded", L"t");
    EXPECT_EQ(remaining.received_count(), 2U);
    EXPECT_TRUE(remaining.stop_receiving());
}

TEST(components_test, the_last_component_can_be_unloaded_and_loaded_again)
{
    for (int round = 0; round < 3; ++round) {
        const component_t component(COMPONENT_ONE);
        component.start_receiving(L"components_test.again");
        component.send_message(L"components_test.again", L"t");
        EXPECT_EQ(component.received_count(), 1U) << round;
        EXPECT_TRUE(component.stop_receiving()) << round;
    }
}

TEST(components_test, a_thread_that_used_a_component_may_outlive_it)
{
    auto component = std::make_unique<component_t>(COMPONENT_ONE);
    component->start_receiving(L"components_test.thread");
    std::thread([&] {
        component->send_message(L"components_test.thread", L"t");
        EXPECT_EQ(component->received_count(), 1U);
        EXPECT_TRUE(component->stop_receiving());
        component.reset();
    }).join();
    EXPECT_FALSE(component);
}

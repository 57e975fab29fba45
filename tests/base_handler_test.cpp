#include <velmoext1/base_handler.h>

#include "support.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace velmoext_1_4_8;

namespace
{

struct throwing_handler_t : base_handler_t
{
    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t /*msg*/) override
    {
        throw std::runtime_error("handler");
    }
};

class base_handler_test : public testing::Test
{
protected:
    typedef boost::shared_ptr<recording_handler_t> handler_ptr_t;

    handler_ptr_t push(bool consumes = false)
    {
        auto handler = boost::make_shared<recording_handler_t>(consumes);
        m_ex->push_handler(handler);
        return handler;
    }

    void deliver_one() { deliver(m_ex, make_message(L"t")); }

    boost::shared_ptr<velmo_ex_t> m_ex =
        velmo_ex_t::get(velmo_ex_t::generate_id(L"base_handler_test."), L"");
};

} // namespace

TEST_F(base_handler_test, consumes_nothing_by_default)
{
    base_handler_t handler;
    EXPECT_FALSE(handler.on_message(m_ex, make_message(L"t")));
    EXPECT_FALSE(handler.on_message(m_ex, boost::make_shared<progress_message_t>()));
    EXPECT_FALSE(handler.on_message(boost::shared_ptr<velmo_ex_t>(), message_ptr_t()));
}

TEST_F(base_handler_test, passes_messages_on_by_default)
{
    const handler_ptr_t below = push();
    m_ex->push_handler(boost::make_shared<base_handler_t>());
    deliver_one();
    EXPECT_EQ(below->messages().size(), 1U);
}

TEST_F(base_handler_test, the_last_pushed_handler_is_called_first)
{
    std::wstring order;
    struct naming_handler_t : base_handler_t
    {
        naming_handler_t(std::wstring& order, wchar_t name) : m_order(order), m_name(name) {}
        using base_handler_t::on_message;
        bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t /*msg*/) override
        {
            m_order += m_name;
            return false;
        }
        std::wstring& m_order;
        wchar_t m_name;
    };
    for (const wchar_t name : {L'a', L'b', L'c'})
        m_ex->push_handler(boost::make_shared<naming_handler_t>(std::ref(order), name));
    deliver_one();
    EXPECT_EQ(order, L"cba");
}

TEST_F(base_handler_test, a_handler_that_consumes_ends_the_delivery)
{
    const handler_ptr_t below = push();
    const handler_ptr_t above = push(true);
    deliver_one();
    EXPECT_EQ(above->messages().size(), 1U);
    EXPECT_TRUE(below->messages().empty());
}

TEST_F(base_handler_test, a_message_without_handlers_is_dropped)
{
    deliver_one();
    const handler_ptr_t later = push();
    EXPECT_TRUE(later->messages().empty());
}

TEST_F(base_handler_test, popping_returns_the_last_pushed_first_and_null_at_the_end)
{
    const handler_ptr_t a = push();
    const handler_ptr_t b = push();
    EXPECT_EQ(m_ex->pop_handler(), b);
    EXPECT_EQ(m_ex->pop_handler(), a);
    EXPECT_FALSE(m_ex->pop_handler());
    EXPECT_FALSE(m_ex->pop_handler());
}

TEST_F(base_handler_test, a_popped_handler_receives_no_more_messages)
{
    const handler_ptr_t handler = push();
    m_ex->pop_handler();
    deliver_one();
    EXPECT_TRUE(handler->messages().empty());
}

TEST_F(base_handler_test, a_handler_that_is_pushed_twice_receives_a_message_twice)
{
    const handler_ptr_t handler = push();
    m_ex->push_handler(handler);
    deliver_one();
    EXPECT_EQ(handler->messages().size(), 2U);
}

TEST_F(base_handler_test, a_consuming_handler_that_is_pushed_twice_receives_a_message_once)
{
    const handler_ptr_t handler = push(true);
    m_ex->push_handler(handler);
    deliver_one();
    EXPECT_EQ(handler->messages().size(), 1U);
}

TEST_F(base_handler_test, all_handlers_receive_an_empty_message_pointer)
{
    const handler_ptr_t below = push();
    const handler_ptr_t above = push();
    say_to(m_ex, L"no message");
    EXPECT_EQ(above->messages(), std::vector<message_ptr_t>(1));
    EXPECT_EQ(below->messages(), std::vector<message_ptr_t>(1));
}

TEST_F(base_handler_test, a_handler_that_consumes_stops_an_empty_message_pointer_too)
{
    const handler_ptr_t below = push();
    push(true);
    say_to(m_ex, L"no message");
    EXPECT_TRUE(below->messages().empty());
}

TEST_F(base_handler_test, receives_the_object_that_delivers)
{
    const handler_ptr_t handler = push();
    deliver_one();
    EXPECT_EQ(handler->exs(), std::vector<velmo_ex_t*>{m_ex.get()});
}

TEST_F(base_handler_test, the_stack_owns_its_handlers)
{
    boost::weak_ptr<recording_handler_t> watched = push();
    EXPECT_FALSE(watched.expired());
    m_ex->pop_handler();
    EXPECT_TRUE(watched.expired());
}

TEST_F(base_handler_test, the_stack_releases_its_handlers_with_the_object)
{
    boost::weak_ptr<recording_handler_t> watched = push();
    m_ex.reset();
    EXPECT_TRUE(watched.expired());
}

TEST_F(base_handler_test, an_exception_of_a_handler_propagates_and_ends_the_delivery)
{
    const handler_ptr_t below = push();
    m_ex->push_handler(boost::make_shared<throwing_handler_t>());
    EXPECT_THROW(deliver_one(), std::runtime_error);
    EXPECT_TRUE(below->messages().empty());
}

TEST_F(base_handler_test, an_exception_leaves_the_stack_unchanged_and_unlocked)
{
    const handler_ptr_t below = push();
    const auto throwing = boost::make_shared<throwing_handler_t>();
    m_ex->push_handler(throwing);
    EXPECT_THROW(deliver_one(), std::runtime_error);
    EXPECT_EQ(m_ex->pop_handler(), throwing);
    deliver_one();
    EXPECT_EQ(below->messages().size(), 1U);
}

TEST_F(base_handler_test, may_deliver_to_another_object)
{
    const auto other = velmo_ex_t::get(velmo_ex_t::generate_id(L"other."), L"");
    const auto other_handler = boost::make_shared<recording_handler_t>();
    other->push_handler(other_handler);
    struct forwarding_handler_t : base_handler_t
    {
        explicit forwarding_handler_t(boost::shared_ptr<velmo_ex_t> to) : m_to(std::move(to)) {}
        using base_handler_t::on_message;
        bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t msg) override
        {
            deliver(m_to, msg);
            return true;
        }
        boost::shared_ptr<velmo_ex_t> m_to;
    };
    m_ex->push_handler(boost::make_shared<forwarding_handler_t>(other));
    deliver_one();
    EXPECT_EQ(other_handler->messages().size(), 1U);
}

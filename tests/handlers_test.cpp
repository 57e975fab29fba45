#include <velmoext1/handlers.h>

#include "support.h"

#include <gtest/gtest.h>

#include <optional>

using namespace velmoext_1_4_8;

namespace
{

typedef boost::shared_ptr<base_handler_t> handler_ptr_t;

// An extension object with a handler at the bottom that keeps each message.
class handlers_test : public testing::Test
{
protected:
    handlers_test() { m_ex->push_handler(m_bottom); }

    // Returns the number of messages that reached the bottom.
    std::size_t passed_on_count() const { return m_bottom->messages().size(); }

    const boost::shared_ptr<velmo_ex_t> m_ex =
        velmo_ex_t::get(velmo_ex_t::generate_id(L"handlers_test."), L"");
    const boost::shared_ptr<recording_handler_t> m_bottom =
        boost::make_shared<recording_handler_t>();
};

} // namespace

TEST_F(handlers_test, a_function_gets_each_message_and_consumes_those_for_which_it_returns_true)
{
    std::wstring types;
    m_ex->push_handler(make_handler([&](const message_ptr_t& msg) {
        types += msg->get_type();
        return msg->get_type() == L"b";
    }));
    for (const wchar_t* const type : {L"a", L"b", L"c"})
        deliver(m_ex, make_message(type));
    EXPECT_EQ(types, L"abc");
    EXPECT_EQ(passed_on_count(), 2U);
}

TEST_F(handlers_test, a_function_is_not_called_for_a_text_that_is_not_a_message)
{
    m_ex->push_handler(make_handler([](const message_ptr_t& /*msg*/) {
        ADD_FAILURE();
        return true;
    }));
    say_to(m_ex, L"no message");
    ASSERT_EQ(passed_on_count(), 1U);
    EXPECT_FALSE(m_bottom->messages().front());
}

TEST_F(handlers_test, a_function_may_have_a_state)
{
    m_ex->push_handler(
        make_handler([count = 0](const message_ptr_t& /*msg*/) mutable { return ++count == 2; }));
    for (int i = 0; i < 3; ++i)
        deliver(m_ex, make_message(L"a"));
    EXPECT_EQ(passed_on_count(), 2U);
}

TEST_F(handlers_test, a_flagger_adds_flags_from_its_severity_on_and_passes_everything_on)
{
    m_ex->push_handler(make_flagger(message_t::warning, 2));
    m_ex->push_handler(make_flagger(message_t::info, 1));
    for (const auto severity :
         {message_t::none, message_t::info, message_t::warning, message_t::critical})
        deliver(m_ex, make_message(L"a", severity));
    say_to(m_ex, L"no message");
    ASSERT_EQ(passed_on_count(), 5U);
    std::vector<int> flags;
    for (std::size_t i = 0; i < 4; ++i)
        flags.push_back(m_bottom->messages()[i]->get_flags());
    EXPECT_EQ(flags, (std::vector<int>{0, 1, 3, 3}));
}

TEST_F(handlers_test, a_scoped_handler_is_on_the_stack_while_in_scope)
{
    const auto handler = boost::make_shared<recording_handler_t>();
    {
        const scoped_handler_t scope(m_ex, handler);
        deliver(m_ex, make_message(L"a"));
    }
    deliver(m_ex, make_message(L"b"));
    EXPECT_EQ(handler->messages().size(), 1U);
    EXPECT_EQ(passed_on_count(), 2U);
    EXPECT_EQ(handler.use_count(), 1);
}

TEST_F(handlers_test, scopes_may_end_in_any_order)
{
    const handler_ptr_t one = boost::make_shared<recording_handler_t>();
    const handler_ptr_t two = boost::make_shared<recording_handler_t>();
    const handler_ptr_t three = boost::make_shared<recording_handler_t>();
    std::optional<scoped_handler_t> first(std::in_place, m_ex, one);
    const scoped_handler_t second(m_ex, two);
    m_ex->push_handler(three);
    first.reset();
    EXPECT_EQ(m_ex->pop_handler(), three);
    EXPECT_EQ(m_ex->pop_handler(), two);
    EXPECT_EQ(m_ex->pop_handler(), m_bottom);
}

TEST_F(handlers_test, a_scope_does_not_change_the_stack_if_its_handler_was_popped)
{
    {
        const scoped_handler_t scope(m_ex, boost::make_shared<recording_handler_t>());
        m_ex->pop_handler();
        m_ex->push_handler(make_flagger(message_t::info, 1));
    }
    EXPECT_TRUE(m_ex->pop_handler());
    EXPECT_EQ(m_ex->pop_handler(), m_bottom);
    EXPECT_FALSE(m_ex->pop_handler());
}

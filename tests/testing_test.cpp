#include <velmoext1/testing.h>

#include "support.h"

#include <gtest/gtest.h>

using namespace velmoext_1_4_8;

namespace
{

class testing_test : public testing::Test
{
protected:
    const boost::shared_ptr<velmo_ex_t> m_ex =
        velmo_ex_t::get(velmo_ex_t::generate_id(L"testing_test."), L"");
};

message_ptr_t make_large(message_t::severity_t severity = message_t::warning)
{
    const message_ptr_t message = make_message(L"file_large", severity);
    message->set_content(make_content({{L"tool", L"audit"}}, {{L"path", L"/a"}}));
    return message;
}

bool matches(const message_ptr_t& message)
{
    return testing::Matches(is_message(L"file_large", message_t::warning, {{L"path", L"/a"}}))(
        message);
}

} // namespace

TEST_F(testing_test, a_message_that_is_sent_is_captured)
{
    const auto handler = boost::make_shared<capturing_handler_t>();
    m_ex->push_handler(handler);
    loop_back_messenger_t channel(m_ex);
    velmo_adapter_t sender;
    sender.set_output_velmo(&channel);
    sender.send_to_velmo(make_large());
    channel.say(velmo2::info, L"no message");
    EXPECT_THAT(handler->messages(),
                testing::ElementsAre(
                    is_message(L"file_large", message_t::warning, {{L"path", L"/a"}}), nullptr));
    ASSERT_EQ(channel.texts().size(), 2U);
    EXPECT_EQ(channel.texts().front(), sender.encode_to_velmo(make_large()));
    EXPECT_EQ(channel.texts().back(), L"no message");
}

TEST_F(testing_test, a_capturing_handler_consumes_messages_unless_it_is_told_not_to)
{
    const auto bottom = boost::make_shared<capturing_handler_t>();
    m_ex->push_handler(bottom);
    m_ex->push_handler(boost::make_shared<capturing_handler_t>(false));
    deliver(m_ex, make_large());
    m_ex->push_handler(boost::make_shared<capturing_handler_t>());
    deliver(m_ex, make_large());
    EXPECT_EQ(bottom->messages().size(), 1U);
}

TEST_F(testing_test, a_message_matches_by_type_severity_and_arguments)
{
    EXPECT_TRUE(matches(make_large()));
    EXPECT_FALSE(matches(make_large(message_t::error)));
    EXPECT_FALSE(matches(make_message(L"file_large", message_t::warning))) << "no argument";
    EXPECT_FALSE(matches(nullptr));
    const message_ptr_t other = make_large();
    other->set_type(L"file_small");
    EXPECT_FALSE(matches(other));
}

TEST_F(testing_test, messages_are_printed_whole)
{
    EXPECT_EQ(testing::PrintToString(*make_large()),
              "type L\"file_large\", severity 2, flags 0, attributes { (L\"tool\", L\"audit\") }, "
              "args { (L\"path\", L\"/a\") }, elements {}");
    EXPECT_EQ(testing::PrintToString(make_large()), testing::PrintToString(*make_large()));
    EXPECT_EQ(testing::PrintToString(message_ptr_t()), "no message");
}

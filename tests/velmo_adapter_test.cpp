#include <velmoext1/velmo_adapter.h>

#include "support.h"

#include <gtest/gtest.h>

#include <functional>

using namespace velmoext_1_4_8;

namespace
{

// A host that records the texts it receives, and passes them on if it has a receiver.
class host_messenger_t : public velmo2::IMessenger
{
public:
    explicit host_messenger_t(velmo2::IMessenger* next = nullptr) : m_next(next) {}

    void say(velmo2::ESeverity severity, const wchar_t* text) override
    {
        m_severities.push_back(severity);
        m_texts.emplace_back(text);
        if (m_next)
            m_next->say(severity, text);
    }

    const std::vector<int>& severities() const { return m_severities; }
    const std::vector<std::wstring>& texts() const { return m_texts; }

private:
    velmo2::IMessenger* m_next;
    std::vector<int> m_severities;
    std::vector<std::wstring> m_texts;
};

class velmo_adapter_test : public testing::Test
{
protected:
    velmo_adapter_test()
    {
        m_ex->push_handler(m_handler);
        m_receiver.set_output_velmoext(m_ex);
    }

    static void say(velmo_adapter_t& adapter, const std::wstring& text,
                    velmo2::ESeverity severity = velmo2::info)
    {
        static_cast<velmo2::IMessenger&>(adapter).say(severity, text.c_str());
    }

    static message_ptr_t make_full_message()
    {
        const auto message = make_message(
            make_content({{L"tool", L"audit"}}, {{L"path", L"a <b> & c"}}, {{L"note", L"\x4E00"}}));
        message->set_type(L"file_large");
        message->set_severity(message_t::critical);
        return message;
    }

    boost::shared_ptr<velmo_ex_t> m_ex =
        velmo_ex_t::get(velmo_ex_t::generate_id(L"velmo_adapter_test."), L"");
    boost::shared_ptr<recording_handler_t> m_handler = boost::make_shared<recording_handler_t>();
    velmo_adapter_t m_receiver;
};

} // namespace

TEST_F(velmo_adapter_test, a_message_arrives_over_the_channel_as_it_was_sent)
{
    host_messenger_t host(&m_receiver);
    velmo_adapter_t sender;
    sender.set_output_velmo(&host);
    const message_ptr_t sent = make_full_message();
    sender.send_to_velmo(sent);
    ASSERT_EQ(m_handler->messages().size(), 1U);
    const message_ptr_t arrived = m_handler->messages().front();
    EXPECT_TRUE(arrived->equal_to(sent));
    EXPECT_EQ(arrived->get_content().args, sent->get_content().args);
    EXPECT_EQ(arrived->get_content().attributes, sent->get_content().attributes);
    EXPECT_EQ(arrived->get_content().elements, sent->get_content().elements);
}

TEST_F(velmo_adapter_test, a_message_that_arrives_stops_at_the_handler_that_consumes_it)
{
    const auto above = boost::make_shared<recording_handler_t>(true);
    m_ex->push_handler(above);
    velmo_adapter_t sender;
    sender.set_output_velmo(&m_receiver);
    sender.send_to_velmo(make_full_message());
    EXPECT_EQ(above->messages().size(), 1U);
    EXPECT_TRUE(m_handler->messages().empty());
}

TEST_F(velmo_adapter_test, the_hosts_severity_has_no_effect)
{
    const std::wstring text = m_receiver.encode_to_velmo(make_full_message());
    for (const auto severity : {velmo2::debug, velmo2::info, velmo2::warning, velmo2::error})
        say(m_receiver, text, severity);
    ASSERT_EQ(m_handler->messages().size(), 4U);
    for (const message_ptr_t& message : m_handler->messages())
        EXPECT_EQ(message->get_severity(), message_t::critical);
}

TEST_F(velmo_adapter_test, every_text_is_sent_with_the_hosts_severity_info)
{
    host_messenger_t host;
    velmo_adapter_t sender;
    sender.set_output_velmo(&host);
    for (const auto severity : {message_t::none, message_t::info, message_t::critical})
        sender.send_to_velmo(make_message(L"t", severity));
    EXPECT_EQ(host.severities(), (std::vector<int>{1, 1, 1}));
}

TEST_F(velmo_adapter_test, without_an_extension_object_no_text_does_anything)
{
    velmo_adapter_t adapter;
    say(adapter, L"no message");
    say(adapter, adapter.encode_to_velmo(make_full_message()));
    static_cast<velmo2::IMessenger&>(adapter).say(velmo2::info, nullptr);
    EXPECT_TRUE(m_handler->messages().empty());
}

TEST_F(velmo_adapter_test, a_text_without_a_message_arrives_as_null)
{
    for (const wchar_t* text : {L"plain text", L"", L"<log><msg><type>t</type></msg></log>"})
        say(m_receiver, text);
    EXPECT_EQ(m_handler->messages(), std::vector<message_ptr_t>(3));
}

TEST_F(velmo_adapter_test, the_encoded_text_is_the_text_that_is_sent)
{
    host_messenger_t host;
    velmo_adapter_t sender;
    sender.set_output_velmo(&host);
    const message_ptr_t message = make_full_message();
    sender.send_to_velmo(message);
    EXPECT_EQ(host.texts(), std::vector<std::wstring>{sender.encode_to_velmo(message)});
    EXPECT_EQ(host.texts().front(), string_message_serializer_t::message_to_xml_string(message));
}

TEST_F(velmo_adapter_test, encoding_sends_and_delivers_nothing)
{
    host_messenger_t host;
    m_receiver.set_output_velmo(&host);
    m_receiver.encode_to_velmo(make_full_message());
    EXPECT_TRUE(host.texts().empty());
    EXPECT_TRUE(m_handler->messages().empty());
}

TEST_F(velmo_adapter_test, a_copy_delivers_into_the_same_extension_object)
{
    velmo_adapter_t constructed(m_receiver);
    velmo_adapter_t assigned;
    EXPECT_EQ(&(assigned = m_receiver), &assigned);
    say(constructed, L"");
    say(assigned, L"");
    EXPECT_EQ(m_handler->messages().size(), 2U);
}

TEST_F(velmo_adapter_test, a_copy_sends_to_the_same_host_messenger)
{
    host_messenger_t host;
    m_receiver.set_output_velmo(&host);
    velmo_adapter_t copy(m_receiver);
    copy.send_to_velmo(make_full_message());
    EXPECT_EQ(host.texts().size(), 1U);
}

TEST_F(velmo_adapter_test, an_adapter_that_is_its_own_host_delivers_what_it_sends)
{
    m_receiver.set_output_velmo(&m_receiver);
    m_receiver.send_to_velmo(make_full_message());
    ASSERT_EQ(m_handler->messages().size(), 1U);
    EXPECT_EQ(m_handler->messages().front()->get_type(), L"file_large");
}

TEST_F(velmo_adapter_test, sending_does_not_deliver_to_the_own_extension_object)
{
    host_messenger_t host;
    m_receiver.set_output_velmo(&host);
    m_receiver.send_to_velmo(make_full_message());
    EXPECT_TRUE(m_handler->messages().empty());
}

TEST_F(velmo_adapter_test, delivering_sends_nothing_to_the_host)
{
    host_messenger_t host;
    m_receiver.set_output_velmo(&host);
    say(m_receiver, m_receiver.encode_to_velmo(make_full_message()));
    EXPECT_TRUE(host.texts().empty());
}

TEST_F(velmo_adapter_test, owns_its_extension_object_until_it_gets_another)
{
    boost::weak_ptr<velmo_ex_t> watched = m_ex;
    m_ex.reset();
    EXPECT_FALSE(watched.expired());
    m_receiver.set_output_velmoext(boost::shared_ptr<velmo_ex_t>());
    EXPECT_TRUE(watched.expired());
    say(m_receiver, L"");
    EXPECT_TRUE(m_handler->messages().empty());
}

TEST_F(velmo_adapter_test, takes_null_for_a_host_messenger)
{
    host_messenger_t host;
    m_receiver.set_output_velmo(&host);
    m_receiver.set_output_velmo(nullptr);
    say(m_receiver, L"");
    EXPECT_EQ(m_handler->messages().size(), 1U);
    EXPECT_TRUE(host.texts().empty());
}

TEST_F(velmo_adapter_test, a_handler_may_reset_the_output_and_so_release_the_extension_object)
{
    struct closing_handler_t : base_handler_t
    {
        explicit closing_handler_t(velmo_adapter_t& adapter) : m_adapter(adapter) {}
        using base_handler_t::on_message;
        bool on_message(boost::shared_ptr<velmo_ex_t> ex, message_ptr_t /*msg*/) override
        {
            m_adapter.set_output_velmoext(boost::shared_ptr<velmo_ex_t>());
            return !ex;
        }
        velmo_adapter_t& m_adapter;
    };
    m_ex->push_handler(boost::make_shared<closing_handler_t>(std::ref(m_receiver)));
    boost::weak_ptr<velmo_ex_t> watched = m_ex;
    m_ex.reset();
    say(m_receiver, L"");
    EXPECT_EQ(m_handler->messages().size(), 1U);
    EXPECT_TRUE(watched.expired());
}

TEST_F(velmo_adapter_test, an_exception_of_a_handler_propagates_and_the_next_message_arrives)
{
    struct throwing_handler_t : base_handler_t
    {
        using base_handler_t::on_message;
        bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr_t /*msg*/) override
        {
            throw 1;
        }
    };
    m_ex->push_handler(boost::make_shared<throwing_handler_t>());
    EXPECT_THROW(say(m_receiver, L""), int);
    m_ex->pop_handler();
    say(m_receiver, L"");
    EXPECT_EQ(m_handler->messages().size(), 1U);
}

TEST_F(velmo_adapter_test, an_exception_of_the_host_propagates_to_the_sender)
{
    struct throwing_host_t : velmo2::IMessenger
    {
        void say(velmo2::ESeverity /*severity*/, const wchar_t* /*text*/) override { throw 1; }
    } host;
    velmo_adapter_t sender;
    sender.set_output_velmo(&host);
    EXPECT_THROW(sender.send_to_velmo(make_full_message()), int);
}

TEST_F(velmo_adapter_test, handlers_get_the_extension_objects_own_pointer)
{
    const auto handler = boost::make_shared<owner_handler_t>(m_ex);
    m_ex->push_handler(handler);
    m_receiver.set_output_velmoext(boost::shared_ptr<velmo_ex_t>(m_ex.get(), [](velmo_ex_t*) {}));
    say(m_receiver, L"<msg/>");
    m_receiver.set_output_velmoext(
        boost::shared_ptr<velmo_ex_t>(boost::make_shared<int>(), m_ex.get()));
    say(m_receiver, L"no message");
    EXPECT_EQ(handler->results(), std::vector<bool>(2, true));
}

// A message from end to end: over the host's channel into the handlers of an extension object.

#include "support.h"

#include <gtest/gtest.h>

#include <random>

using namespace velmoext_1_4_8;

namespace
{

// Creates messages of every kind that XML allows, the same ones in every run.
class random_messages_t
{
public:
    message_ptr_t next()
    {
        const auto message = make_message(text(), static_cast<message_t::severity_t>(number(5)));
        message->set_content(make_content(texts(&random_messages_t::name, 4),
                                          texts(&random_messages_t::arg_name, max_args()),
                                          texts(&random_messages_t::element_name, 4)));
        return message;
    }

private:
    unsigned number(unsigned below)
    {
        return std::uniform_int_distribution<unsigned>(0, below - 1)(m_engine);
    }

    unsigned max_args() { return number(100) == 0 ? 300 : 8; }

    void append(std::wstring& text, unsigned character)
    {
        if (character < 0x10000)
            text.push_back(static_cast<wchar_t>(character));
        else
            text += units({0xD7C0 + (character >> 10), 0xDC00 + (character & 0x3FF)});
    }

    unsigned character()
    {
        static const std::wstring markup = L"<>&\"' \t\n\r]]>;#x-!?/=";
        switch (number(6)) {
        case 0:
            return static_cast<unsigned>(markup[number(static_cast<unsigned>(markup.size()))]);
        case 1:
            return 0x20 + number(0xD7E0);
        case 2:
            return 0xE000 + number(0x1FFE);
        case 3:
            return 0x10000 + number(0x100000);
        default:
            return 0x20 + number(0x5F);
        }
    }

    std::wstring text()
    {
        std::wstring result;
        for (unsigned length = number(12); length > 0; --length)
            append(result, character());
        return result;
    }

    std::wstring arg_name() { return L"a" + text(); }

    std::wstring name()
    {
        std::wstring result(1, static_cast<wchar_t>('a' + number(26)));
        for (unsigned length = number(6); length > 0; --length)
            switch (number(3)) {
            case 0:
                append(result, 0x10000 + number(0xE0000));
                break;
            case 1:
                append(result, 0x3001 + number(0xA7FF));
                break;
            default:
                append(result, '0' + number(10));
            }
        return result;
    }

    // Not one of the names that have a meaning in the message itself.
    std::wstring element_name() { return L"x-" + name(); }

    string_map_t texts(std::wstring (random_messages_t::*key)(), unsigned max_texts)
    {
        string_map_t result;
        for (unsigned count = number(max_texts); count > 0; --count)
            result[(this->*key)()] = text();
        return result;
    }

    std::mt19937 m_engine{20260101};
};

} // namespace

TEST(channel_test, random_messages_arrive_as_they_were_sent)
{
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"channel_test."), L"");
    const auto handler = boost::make_shared<recording_handler_t>();
    ex->push_handler(handler);
    velmo_adapter_t receiver;
    receiver.set_output_velmoext(ex);
    velmo_adapter_t sender;
    sender.set_output_velmo(&receiver);
    random_messages_t messages;
    for (int i = 0; i < 20000; ++i) {
        const message_ptr_t sent = messages.next();
        sender.send_to_velmo(sent);
        ASSERT_EQ(handler->messages().size(), static_cast<std::size_t>(i) + 1);
        const message_ptr_t arrived = handler->messages().back();
        ASSERT_TRUE(arrived) << testing::PrintToString(sender.encode_to_velmo(sent));
        ASSERT_EQ(arrived->get_type(), sent->get_type());
        ASSERT_EQ(arrived->get_severity(), sent->get_severity());
        ASSERT_EQ(arrived->get_content().args, sent->get_content().args);
        ASSERT_EQ(arrived->get_content().attributes, sent->get_content().attributes);
        ASSERT_EQ(arrived->get_content().elements, sent->get_content().elements);
    }
}

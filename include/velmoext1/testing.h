/// @file
/// Helpers for tests of components and handlers: a handler that keeps messages, a channel within
/// the process, and GoogleTest's printers and matchers for messages.
///
/// Requires GoogleTest and GoogleMock. Not included by velmoext1.h.
#pragma once

#include <velmoext1/base_handler.h>
#include <velmoext1/message.h>
#include <velmoext1/velmo_adapter.h>
#include <velmoext1/velmo_ex.h>

#include <velmo2/messenger.h>

#include <boost/shared_ptr.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace velmoext_1_4_8
{

/// Handler that keeps each message. Not synchronized beyond the delivery: read it when no thread
/// delivers.
class capturing_handler_t : public base_handler_t
{
public:
    /// Consumes each message if is_consuming is true, else passes it on.
    explicit capturing_handler_t(bool is_consuming = true) : m_is_consuming(is_consuming) {}

    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, boost::shared_ptr<message_t> msg) override
    {
        m_messages.push_back(std::move(msg));
        return m_is_consuming;
    }

    /// Returns the messages in their order, with null for each text that was not a message.
    const std::vector<boost::shared_ptr<message_t>>& messages() const { return m_messages; }

private:
    bool m_is_consuming;
    std::vector<boost::shared_ptr<message_t>> m_messages;
};

/// Messenger that keeps each text and delivers it to an extension object of the same process. It
/// replaces the host and its channel in a test. Not synchronized.
///
///     loop_back_messenger_t channel(ex);
///     component.set_output_velmo(&channel); // a velmo_adapter_t
class loop_back_messenger_t : public velmo2::IMessenger
{
public:
    explicit loop_back_messenger_t(boost::shared_ptr<velmo_ex_t> ex)
    {
        m_receiver.set_output_velmoext(std::move(ex));
    }

    void say(velmo2::ESeverity severity, const wchar_t* text) override
    {
        m_texts.emplace_back(text);
        static_cast<velmo2::IMessenger&>(m_receiver).say(severity, text);
    }

    /// Returns the texts in their order.
    const std::vector<std::wstring>& texts() const { return m_texts; }

private:
    velmo_adapter_t m_receiver;
    std::vector<std::wstring> m_texts;
};

/// Prints all of a message for GoogleTest.
inline void PrintTo(const message_t& message, std::ostream* stream) // NOLINT: GoogleTest's name
{
    const message_t::message_content_t content = message.get_content();
    *stream << "type " << testing::PrintToString(message.get_type()) << ", severity "
            << static_cast<std::int32_t>(message.get_severity()) << ", flags "
            << message.get_flags() << ", attributes " << testing::PrintToString(content.attributes)
            << ", args " << testing::PrintToString(content.args) << ", elements "
            << testing::PrintToString(content.elements);
}

/// Prints the message that the pointer points to.
inline void PrintTo(const boost::shared_ptr<message_t>& message, // NOLINT: GoogleTest's name
                    std::ostream* stream)
{
    if (message)
        PrintTo(*message, stream);
    else
        *stream << "no message";
}

/// Matches a pointer to a message of this type and severity with exactly these arguments. Ignores
/// attributes, elements and flags:
///
///     EXPECT_THAT(handler->messages(), testing::ElementsAre(is_message(
///         L"file_large", message_t::warning, {{L"path", L"/a"}})));
inline testing::Matcher<boost::shared_ptr<message_t>>
is_message(const std::wstring& type, message_t::severity_t severity,
           const std::map<std::wstring, std::wstring>& args = {})
{
    typedef message_t::message_content_t content_t;
    return testing::Pointee(
        testing::AllOf(testing::Property("type", &message_t::get_type, type),
                       testing::Property("severity", &message_t::get_severity, severity),
                       testing::Property("content", &message_t::get_content,
                                         testing::Field("args", &content_t::args, args))));
}

} // namespace velmoext_1_4_8

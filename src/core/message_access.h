#pragma once

#include <velmoext1/message.h>

namespace velmoext_1_4_8
{

/// Gives the library's own code the texts of a message, which the public operations copy.
struct message_access_t
{
    static std::wstring& type(message_t& message) { return message.m_type; }

    static const std::wstring& type(const message_t& message) { return message.m_type; }

    /// Null when the message has none.
    static const std::wstring* find_source(const message_t& message);

    /// Sets the source that an attribute "source" names, if the message has one.
    static void add_tool(message_t& message);

    static message_t::message_content_t& content(message_t& message) { return message.m_content; }

    static const message_t::message_content_t& content(const message_t& message)
    {
        return message.m_content;
    }
};

} // namespace velmoext_1_4_8

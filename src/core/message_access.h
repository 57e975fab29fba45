#pragma once

#include <velmoext1/message.h>

namespace velmoext_1_4_8
{

/// Lets what works on messages look at their texts, where the public operations would copy them.
struct message_access
{
    static std::wstring& type(message_t& message) { return message.m_type; }

    static const std::wstring& type(const message_t& message) { return message.m_type; }

    static const std::wstring& source(const message_t& message);

    static message_t::message_content_t& content(message_t& message) { return message.m_content; }

    static const message_t::message_content_t& content(const message_t& message)
    {
        return message.m_content;
    }
};

} // namespace velmoext_1_4_8

#pragma once

#include <velmoext1/message.h>

namespace velmoext_1_4_8
{

/// Lets the reader and the writer of messages work on the content itself, where the public
/// operations would copy all of it for every argument.
struct message_access
{
    static message_t::message_content_t& content(message_t& message) { return message.m_content; }

    static const message_t::message_content_t& content(const message_t& message)
    {
        return message.m_content;
    }
};

} // namespace velmoext_1_4_8

/// @file
#pragma once

#include <velmoext1/extended_message.h>
#include <velmoext1/message.h>
#include <velmoext1/velmo_ex.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace velmoext_1_4_8
{

/// Returns the type of the message and its arguments, such as "file_large path=/a size=4096".
/// Returns "message" instead of an empty type.
inline std::wstring plain_text(const message_t& message)
{
    std::wstring text = message.get_type();
    if (text.empty())
        text = L"message";
    for (const auto& [name, value] : message.get_content().args)
        text.append(L" ").append(name).append(L"=").append(value);
    return text;
}

/// Returns the title and the text of the message as extended_message_t gives them: "TITLE: TEXT",
/// or "TEXT" without a title. Uses plain_text() instead of an empty text, so the result is never
/// empty. It may contain any character of the message, line breaks and control characters included.
/// Neither pointer may be null.
inline std::wstring readable_text(const boost::shared_ptr<velmo_ex_t>& ex,
                                  const boost::shared_ptr<message_t>& message)
{
    extended_message_t extended(ex, message);
    const std::wstring title = extended.get_title();
    std::wstring text = extended.get_text();
    if (text.empty())
        text = plain_text(*message);
    return title.empty() ? text : title + L": " + text;
}

} // namespace velmoext_1_4_8

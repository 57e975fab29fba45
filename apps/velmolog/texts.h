#pragma once

#include <velmoext1/message.h>

#include <string>

namespace velmolog
{

/// The title and the text of a message, in UTF-8 and not escaped.
struct texts_t
{
    std::string title; ///< may be empty
    std::string text;  ///< is never empty
};

/// Returns the type of the message and its arguments, such as `file_large path=/a`. Quotes an empty
/// value, and one with a blank or a quotation mark, as `path="/a b"`.
std::string plain_text(const velmoext_1_4_8::message_t& message);

} // namespace velmolog

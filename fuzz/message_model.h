#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <vector>

/// What the rules make of a text that may hold a message: a second reader of it, which looks
/// through libxml2's tree of the whole text and heeds no cost.
struct message_model_t
{
    /// The first "msg" element among the topmost nodes; null where there is no such element, and
    /// where the document type refers to a parameter entity. More than one where it depends on the
    /// steps in which libxml2 reads what it makes of the text.
    std::vector<boost::shared_ptr<velmoext_1_4_8::message_t>> readings;

    /// Whether the text is beyond a limit, so that it need not be taken. Then the readings are
    /// missing, or are a part of what it holds.
    bool may_be_refused = false;

    static message_model_t read(const std::wstring& text);
};

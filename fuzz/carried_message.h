#pragma once

#include <velmoext1/message.h>

#include <string>

/// What comes back of a message that is written and read again, as the rules for both have it.
/// Nothing is said about names that declare a prefix.
velmoext_1_4_8::message_t carried_message(const velmoext_1_4_8::message_t& message);

/// A text in the form in which XML brings it back.
std::wstring carried_text(const std::wstring& text);

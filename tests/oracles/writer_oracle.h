#pragma once

#include <velmoext1/message.h>

#include <string>
#include <vector>

/// The bytes that libxml2's writer gives for messages, key by key and text by text, with
/// indentation on and UTF-8 declared. Left out is what would cost more than itself when it is read:
/// - an attribute or element whose key is not a name that libxml2 reads;
/// - an attribute whose name another one has already, in UTF-8.
/// A character that XML 1.0 cannot carry is written as U+FFFD. An empty key ends the content.

std::string written_document(const velmoext_1_4_8::message_t& message);
std::string written_log(const std::vector<velmoext_1_4_8::message_t>& messages);

/// A text as XML 1.0 can carry it, in UTF-16.
std::wstring writable_text(const std::wstring& text);

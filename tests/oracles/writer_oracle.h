#pragma once

#include <velmoext1/message.h>

#include <string>
#include <vector>

/// Returns the output of libxml2's writer for messages, key by key and text by text, with
/// indentation and a declaration of UTF-8. Omits parts that would spoil other parts when they are
/// read:
/// - an attribute or element whose key is not a name that libxml2 reads;
/// - an attribute with the name, in UTF-8, of an earlier one.
/// A character that XML 1.0 does not allow is written as U+FFFD. An empty key ends the content.

std::string written_document(const velmoext_1_4_8::message_t& message);
std::string written_log(const std::vector<velmoext_1_4_8::message_t>& messages);

/// Returns a text with each character that XML 1.0 does not allow replaced, in UTF-16.
std::wstring writable_text(const std::wstring& text);

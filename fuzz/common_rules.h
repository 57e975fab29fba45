#pragma once

#include <velmoext1/message.h>

#include <cstddef>
#include <string>

/// What holds for messages in texts and in logs alike.

/// The severity that the word stands for, in whichever case.
velmoext_1_4_8::message_t::severity_t severity_of(const std::wstring& text);

/// So many attributes of an element are read.
constexpr std::size_t attributes_read = 1000;

/// Whether the document declares an encoding in which its markup may not be ASCII.
bool declares_foreign_encoding(const std::string& document);

#pragma once

#include "random_source.h"

#include <velmoext1/message.h>

#include <string>

/// Returns a message with any content: keys that are names or not, texts of any characters.
velmoext_1_4_8::message_t random_message(random_source_t& random);

/// Returns a text of any elements, including values that no encoding has.
std::wstring random_text(random_source_t& random);

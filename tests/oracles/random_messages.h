#pragma once

#include "random_source.h"

#include <velmoext1/message.h>

#include <string>

/// A message of any kind: keys that are names and keys that are not, texts of any characters.
velmoext_1_4_8::message_t random_message(random_source_t& random);

/// A text of any elements, also of some that no encoding knows.
std::wstring random_text(random_source_t& random);

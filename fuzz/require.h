#pragma once

#include <velmoext1/message.h>

/// Says on standard error what does not hold, and ends the process; nothing where the condition
/// holds.
void require(bool condition, const char* what);

/// The same for two messages, all that they say being compared; the flags are not.
void require_same(const velmoext_1_4_8::message_t& message,
                  const velmoext_1_4_8::message_t& expected);

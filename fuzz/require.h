#pragma once

#include <velmoext1/message.h>

/// Says on standard error what does not hold, and ends the process; nothing where the condition
/// holds.
void require(bool condition, const char* what);

/// Whether two messages say the same; the flags are not compared.
bool is_same(const velmoext_1_4_8::message_t& left, const velmoext_1_4_8::message_t& right);

/// The same as require() for two messages that are to say the same.
void require_same(const velmoext_1_4_8::message_t& message,
                  const velmoext_1_4_8::message_t& expected);

#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

/// Writes the message and reads it again: what comes back is the same, as far as XML can carry it.
/// Says on standard error what is not, and ends the process.
void require_round_trip(boost::shared_ptr<velmoext_1_4_8::message_t> message);

/// Ends the process in the same way where the condition does not hold.
void require(bool condition, const char* what);

#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

/// Writes the message and reads it again, and requires that what comes back is what the rules say.
void require_round_trip(boost::shared_ptr<velmoext_1_4_8::message_t> message);

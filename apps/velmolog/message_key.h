#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace velmolog
{

/// Returns bytes that are the same for messages with the same type, severity, arguments, attributes
/// and elements, and for no others.
std::string key_of(const velmoext_1_4_8::message_t& message);

/// Returns the message with this key.
boost::shared_ptr<velmoext_1_4_8::message_t> message_of(const std::string& key);

} // namespace velmolog

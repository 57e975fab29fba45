#pragma once

#include "message_text.h"

#include <string>

/// Returns all fields of a message except its flags, one per line.
inline std::string fields_of(const velmoext_1_4_8::message_t& message)
{
    return "message\n" + velmoext_1_4_8::message_text(message, "  ", "\n") + "  next argument " +
           std::to_string(message.get_content().next_arg_number) + "\n";
}

inline std::string fields_of(const boost::shared_ptr<velmoext_1_4_8::message_t>& message)
{
    return message ? fields_of(*message) : "no message\n";
}

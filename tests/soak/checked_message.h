#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <random>
#include <string>

namespace soak
{

/// Returns text of plain letters, which no transport of a message changes.
std::wstring plain_text(std::mt19937& random, std::size_t max_length);

/// Returns any text, or a part of a message.
std::wstring odd_text(std::mt19937& random);

/// Creates a message whose arguments allow a check that they are unchanged.
boost::shared_ptr<velmoext_1_4_8::message_t> make_checked_message(std::mt19937& random,
                                                                  const std::wstring& source);

/// Returns whether the message is unchanged, or not from make_checked_message().
bool is_intact(const velmoext_1_4_8::message_t& message);

} // namespace soak

#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <random>
#include <string>

namespace soak
{

/// Text of plain letters, which every way of a message leaves as it is.
std::wstring plain_text(std::mt19937& random, std::size_t longest);

/// Text of anything, or of a part of a message.
std::wstring odd_text(std::mt19937& random);

/// A message whose arguments tell whether they are those that it was made with.
boost::shared_ptr<velmoext_1_4_8::message_t> make_checked_message(std::mt19937& random,
                                                                  const std::wstring& source);

/// Whether the message is whole, or was not made by make_checked_message().
bool is_whole(const velmoext_1_4_8::message_t& message);

} // namespace soak

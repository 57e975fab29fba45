#pragma once

#include <velmoext1/message.h>

#include <boost/container/small_vector.hpp>

#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{

/// The characters of a text while it is composed. Usual messages need no allocation.
template <typename Char>
using text_buffer_t = boost::container::small_vector<Char, 1024>;

/// Appends the message's "msg" element in UTF-8, byte for byte as libxml2's text writer gives it
/// in a UTF-8 document with indentation on and `depth` open elements.
///
/// An attribute or element with an empty key ends attributes, arguments and elements; type and
/// severity follow. Anything that would make the document malformed is replaced or dropped:
/// - a character that XML 1.0 cannot carry becomes U+FFFD;
/// - an attribute or element is left out if its key is not an XML name or cannot be split at its
///   colons, and an attribute if the element already has one of that name.
void append_message_element(const message_t& message, std::size_t depth,
                            text_buffer_t<char>& document);

/// Has the processor fetch the first texts' nodes while the caller does something else.
void prefetch_message(const message_t& message);

/// Returns the message as a document, with the XML declaration: what its UTF-8 is as wide text.
std::wstring compose_document(const message_t& message);

} // namespace velmoext_1_4_8

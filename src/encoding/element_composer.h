#pragma once

#include <velmoext1/message.h>

#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{

/// Appends the message's "msg" element in UTF-8, byte for byte as libxml2's text writer gives it
/// in a UTF-8 document with indentation on, where `depth` elements are open.
///
/// An attribute or element with an empty key ends attributes, arguments and elements; type and
/// severity follow. Whatever would make the document malformed costs only itself:
/// - a character that XML 1.0 cannot carry becomes U+FFFD;
/// - an attribute or element is left out if its key is not an XML name or cannot be split at its
///   colons, and an attribute if the element already has one of that name.
void append_message_element(const message_t& message, std::size_t depth, std::string& document);

/// Returns the message as a document, with the XML declaration.
std::string compose_document(const message_t& message);

} // namespace velmoext_1_4_8

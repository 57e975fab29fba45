#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <string_view>

namespace velmoext_1_4_8
{

/// Reads a document, in UTF-8, that has the form in which the library writes messages, without
/// libxml2 and without any limit. Null for every other document. The message is the one that
/// parse_document() reads.
boost::shared_ptr<message_t> recognize_document(std::string_view document);

/// Reads the "msg" element at the beginning of a text, if it has the form in which the library
/// writes messages into a log, as log_sax_reader builds it from the events of libxml2's parse.
/// Null for every other element, also for one that is not complete. `size` becomes the element's,
/// in bytes, and is unchanged for null.
///
/// Leaves to libxml2 whatever arrives in more than one event: text beyond ASCII, with references or
/// with a carriage return.
boost::shared_ptr<message_t> recognize_log_message(std::string_view text, std::size_t& size);

} // namespace velmoext_1_4_8

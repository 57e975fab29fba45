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

/// The result of recognize_log_message().
struct recognized_t
{
    boost::shared_ptr<message_t> message; ///< null unless it could be read
    /// Of an element in the written form, in bytes; 0 for anything else, also for an element that
    /// is not complete.
    std::size_t size = 0;
};

/// Reads the "msg" element at the beginning of a text, if it has the form in which the library
/// writes messages into a log, as log_sax_reader builds it from the events of libxml2's parse.
///
/// Leaves to libxml2 an element with text that arrives in more than one event: beyond ASCII, with
/// references or with a carriage return.
recognized_t recognize_log_message(std::string_view text);

} // namespace velmoext_1_4_8

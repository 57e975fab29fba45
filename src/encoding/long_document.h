#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace velmoext_1_4_8
{

/// Reads what document_reader_t would, in linear time however long the document is: libxml2's text
/// reader takes it in pieces of 512 bytes, and libxml2 looks through all of an unfinished tag,
/// comment or section with each. Null also for very many different names and ids. No byte order
/// mark may precede it.
boost::shared_ptr<message_t> read_long_document(const std::string& document);

} // namespace velmoext_1_4_8

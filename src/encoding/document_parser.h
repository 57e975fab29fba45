#pragma once

#include "xml/limits.h"

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace velmoext_1_4_8
{

/// The result of parse_document().
struct parsed_document_t
{
    boost::shared_ptr<message_t> message; ///< null when there is none
    refusal_t refusal = refusal_t::none;  ///< the limit that was exceeded, if any
};

/// Reads the first top-level "msg" element of a document in UTF-8 with libxml2, in linear time. The
/// encoding that the document declares is ignored.
///
/// The message is null when there is none, when a limit is exceeded and when libxml2 runs out of
/// memory. It is null for a malformed document too, unless the fault is far after the element and a
/// comment or an instruction is between them. Opens no file that the document names.
parsed_document_t parse_document(const std::string& document);

} // namespace velmoext_1_4_8

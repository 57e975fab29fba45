#pragma once

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <libxml/tree.h>
#include <libxml/xmlwriter.h>

#include <string_view>

namespace velmoext_1_4_8
{

/// Writes the message as one "msg" element below the "log" that is open in the writer, by
/// write_raw(); see append_message_element(). Returns false when the writer refuses it.
///
/// Requires indentation to be on. The writer ends the start tag of "log" without a line break: the
/// caller writes that before the first element.
bool write_message_element(boost::shared_ptr<message_t> message, xmlTextWriterPtr writer);

/// Writes the bytes into the element that is open in the writer, as they are. Returns false when
/// the writer refuses them.
bool write_raw(std::string_view bytes, xmlTextWriterPtr writer);

/// Returns the message in the element. Returns null for a null node, and if the element's entities
/// exceed a limit.
boost::shared_ptr<message_t> read_message_element(const xmlNode* node);

} // namespace velmoext_1_4_8

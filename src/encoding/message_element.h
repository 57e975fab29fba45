#pragma once

#include "xml/error_scope.h"

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <libxml/tree.h>
#include <libxml/xmlwriter.h>

namespace velmoext_1_4_8
{

/// Writes the message as one "msg" element at the writer's place. False where the writer refuses
/// the start or the end of the element; what it refuses between them is missing there, and not
/// reported. Where libxml2 tells the silence that it has no memory, the element is well-formed all
/// the same. See string_message_serializer_t::message_to_xml_string() for what is never written.
bool write_message_element(boost::shared_ptr<message_t> message, xmlTextWriterPtr writer,
                           const xml_error_scope_t& silence);

/// The message that the element holds. Null for a null node, and where the element's entities grow
/// beyond all measure.
boost::shared_ptr<message_t> read_message_element(const xmlNode* node);

} // namespace velmoext_1_4_8

#pragma once

#include <velmoext1/message.h>

#include <string>

namespace velmoext_1_4_8
{

/// The severity's word in XML, empty where it has none.
const char* severity_text(message_t::severity_t severity);

/// The severity that a text from XML, in UTF-8, means, whatever the case of its letters; none where
/// it means nothing.
message_t::severity_t parse_severity(const std::string& text);

} // namespace velmoext_1_4_8

#pragma once

#include <velmoext1/message.h>

#include <string_view>

namespace velmoext_1_4_8
{

/// Returns the severity's word in XML, empty when it has none.
const char* severity_text(message_t::severity_t severity);

/// Returns the severity that a text from XML, in UTF-8, means, whatever the case of its letters;
/// none when it means nothing.
message_t::severity_t parse_severity(std::string_view text);

} // namespace velmoext_1_4_8

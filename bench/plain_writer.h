#pragma once

#include "workload.h"

#include <libxml/xmlwriter.h>

namespace bench
{

/// Writes one message's element with bare calls of libxml2. Ignores their results.
void write_plain(xmlTextWriterPtr writer, const plain_message_t& message);

inline const xmlChar* to_xml(const char* text)
{
    return reinterpret_cast<const xmlChar*>(text);
}

inline const xmlChar* to_xml(const std::string& text)
{
    return to_xml(text.c_str());
}

} // namespace bench

#pragma once

#include <string>

namespace velmoext_1_4_8
{

/// Whether the document type is longer than 64 KiB. libxml2 compares the values that an attribute
/// can have with each other, and the entities can hide elements from whoever looks at the text.
bool has_long_document_type(const std::string& document);

/// Cuts such a document off within its document type: it is damaged there.
void cut_long_document_type(std::string& document);

/// Whether there seem to be such references in the document type. A few bytes of them can make
/// libxml2 build gigabytes before it hands over the first node.
bool refers_to_parameter_entities(const std::string& document);

} // namespace velmoext_1_4_8

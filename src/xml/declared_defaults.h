#pragma once

#include <libxml/tree.h>

#include <cstddef>

namespace velmoext_1_4_8
{

/// Whether this is a document type with so many defaults of attributes that a document of this size
/// could take long: libxml2 looks at each of them for each element.
bool declares_too_many_defaults(const xmlNode& node, std::size_t document_size);

} // namespace velmoext_1_4_8

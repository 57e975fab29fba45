#pragma once

#include "xml/limits.h"

#include <libxml/tree.h>

#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{

/// Collects the text of nodes, with their entities resolved, for one message. Each reference to an
/// entity counts against limits::max_entity_bytes; text written out in the document does not.
class node_text_t
{
public:
    /// Appends the text of the node, its following siblings and all descendants to `text`, in
    /// UTF-8. Returns false, with some of it appended, when a limit is exceeded.
    bool append(const xmlNode* first, std::string& text);

private:
    bool append_node(const xmlNode* node, std::string& text);
    bool append_entity(const xmlNode* reference, std::string& text);

    std::size_t m_entity_bytes_left = limits::max_entity_bytes;
    int m_depth = 0;
};

} // namespace velmoext_1_4_8

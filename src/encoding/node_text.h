#pragma once

#include <libxml/tree.h>

#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{

/// Collects the text of nodes, with their entities resolved, for one message.
///
/// A few bytes of entities can stand for gigabytes of text. So each reference costs something of a
/// budget that one object has for all its texts; what is written out in the document costs nothing.
class node_text_t
{
public:
    /// Appends the text of the node, its followers and all beneath them to `text`, in UTF-8. False,
    /// with some of it appended, where the budget does not suffice or the nodes are nested too
    /// deeply.
    bool append(const xmlNode* first, std::string& text);

private:
    bool append_node(const xmlNode* node, std::string& text);
    bool append_entity(const xmlNode* reference, std::string& text);

    std::size_t m_budget = 10000000;
    int m_depth = 0;
};

} // namespace velmoext_1_4_8

#include "encoding/node_text.h"

#include "encoding/element_names.h"

namespace velmoext_1_4_8
{
namespace
{

// More than libxml2 nests elements; entities that refer to each other could nest without end.
const int max_depth = 1000;

} // namespace

bool node_text_t::append(const xmlNode* first, std::string& text)
{
    if (m_depth == max_depth)
        return false;
    ++m_depth;
    bool complete = true;
    for (const xmlNode* node = first; complete && node; node = node->next)
        complete = append_node(node, text);
    --m_depth;
    return complete;
}

bool node_text_t::append_node(const xmlNode* node, std::string& text)
{
    switch (node->type) {
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
        if (node->content)
            text += from_xml(node->content);
        return true;
    case XML_ENTITY_REF_NODE:
        return append_entity(node, text);
    case XML_ELEMENT_NODE:
        return append(node->children, text);
    default:
        return true;
    }
}

bool node_text_t::append_entity(const xmlNode* reference, std::string& text)
{
    const xmlEntity* const entity = xmlGetDocEntity(reference->doc, reference->name);
    if (!entity)
        return true;
    // What stands in it is paid with it, its own references too.
    const auto cost = static_cast<std::size_t>(entity->length);
    if (cost > m_budget)
        return false;
    m_budget -= cost;
    return append(entity->children, text);
}

} // namespace velmoext_1_4_8

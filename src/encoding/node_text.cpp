#include "encoding/node_text.h"

#include "xml/handles.h"

namespace velmoext_1_4_8
{
bool node_text_t::append(const xmlNode* first, std::string& text)
{
    if (m_depth == limits::max_text_depth)
        return false;
    ++m_depth;
    bool is_complete = true;
    for (const xmlNode* node = first; is_complete && node; node = node->next)
        is_complete = append_node(node, text);
    --m_depth;
    return is_complete;
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
    const auto size = static_cast<std::size_t>(entity->length);
    if (size > m_entity_bytes_left)
        return false;
    m_entity_bytes_left -= size;
    return append(entity->children, text);
}

} // namespace velmoext_1_4_8

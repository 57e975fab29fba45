#include "xml/declared_defaults.h"

namespace velmoext_1_4_8
{
namespace
{

// Whether an element takes the default or not: this many such looks take a fraction of a second.
const std::size_t most_looks = 200000;
const std::size_t smallest_element = sizeof("<a/>") - 1;

bool declares_default(const xmlNode& node)
{
    if (node.type != XML_ATTRIBUTE_DECL)
        return false;
    const xmlAttributeDefault kind = reinterpret_cast<const xmlAttribute&>(node).def;
    return kind != XML_ATTRIBUTE_REQUIRED && kind != XML_ATTRIBUTE_IMPLIED;
}

} // namespace

bool declares_too_many_defaults(const xmlNode& node, std::size_t document_size)
{
    std::size_t defaults = 0;
    if (node.type == XML_DTD_NODE)
        for (const xmlNode* child = node.children; child; child = child->next)
            defaults += declares_default(*child) ? 1 : 0;
    return defaults * (document_size / smallest_element) > most_looks;
}

} // namespace velmoext_1_4_8

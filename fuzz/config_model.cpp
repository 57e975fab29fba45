#include "config_model.h"

#include "xml_errors.h"

#include <rova/strings.h>

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <utility>

namespace
{

const std::size_t max_attributes = 256;

std::wstring to_text(const xmlChar* text)
{
    return ROVA_2_18::strings::utf8_to_utf16(text != nullptr ? reinterpret_cast<const char*>(text)
                                                             : "");
}

std::wstring name_of(const xmlChar* name, const xmlNs* ns)
{
    return (ns != nullptr && ns->prefix != nullptr ? to_text(ns->prefix) + L":" : L"") +
           to_text(name);
}

std::wstring text_of(xmlNode* node)
{
    const std::unique_ptr<xmlChar, void (*)(void*)> text(xmlNodeGetContent(node), xmlFree);
    return to_text(text.get());
}

bool is_text(const xmlNode& node)
{
    return node.type == XML_TEXT_NODE || node.type == XML_CDATA_SECTION_NODE;
}

// Before 2.14, libxml2 stops without an error at malformed bytes after the root.
bool is_read_whole([[maybe_unused]] xmlParserCtxt& parser, [[maybe_unused]] std::size_t size)
{
#if LIBXML_VERSION >= 21400
    return true;
#else
    return xmlByteConsumed(&parser) == static_cast<long>(size);
#endif
}

} // namespace

struct config_model_t::builder_t
{
    bool has_too_many_attributes = false;

    element_t build(xmlNode& node)
    {
        element_t element;
        element.name = name_of(node.name, node.ns);
        for (xmlAttr* at = node.properties; at != nullptr; at = at->next)
            element.attributes.emplace(name_of(at->name, at->ns),
                                       text_of(reinterpret_cast<xmlNode*>(at)));
        has_too_many_attributes |= count_attributes(node) > max_attributes;
        for (xmlNode* child = node.children; child != nullptr; child = child->next)
            if (child->type == XML_ELEMENT_NODE)
                element.children.push_back(build(*child));
            else if (is_text(*child))
                element.text += text_of(child);
        if (element.text.find_first_not_of(L" \t\r\n") == std::wstring::npos)
            element.text.clear();
        return element;
    }

    static std::size_t count_attributes(const xmlNode& node)
    {
        std::size_t count = 0;
        for (const xmlAttr* at = node.properties; at != nullptr; at = at->next)
            ++count;
        for (const xmlNs* at = node.nsDef; at != nullptr; at = at->next)
            ++count;
        return count;
    }
};

std::unique_ptr<config_model_t> config_model_t::read(const std::string& bytes)
{
    const xml_errors_t errors;
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(xmlNewParserCtxt(),
                                                                              xmlFreeParserCtxt);
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> tree(
        xmlCtxtReadMemory(parser.get(), bytes.data(), static_cast<int>(bytes.size()), nullptr,
                          nullptr, XML_PARSE_NONET),
        xmlFreeDoc);
    xmlNode* const root = tree ? xmlDocGetRootElement(tree.get()) : nullptr;
    if (root == nullptr || xmlGetIntSubset(tree.get()) != nullptr ||
        name_of(root->name, root->ns) != L"bag")
        return nullptr;
    auto model = std::make_unique<config_model_t>();
    builder_t builder;
    model->m_root = builder.build(*root);
    model->m_may_be_refused =
        builder.has_too_many_attributes || !is_read_whole(*parser, bytes.size());
    return model;
}

std::wstring config_model_t::property(const std::wstring& name, const std::wstring& type,
                                      const std::wstring& prefix) const
{
    std::wstring found = search(name, type, prefix);
    return found.empty() ? search(name, type, std::wstring()) : found;
}

std::wstring config_model_t::search(const std::wstring& name, const std::wstring& type,
                                    const std::wstring& prefix) const
{
    for (const element_t& entry : m_root.children) {
        const bool is_match = entry.name == L"message_type" && !type.empty() &&
                              value(entry, L"id") == type &&
                              (prefix.empty() || value(entry, L"prefix") == prefix);
        std::wstring found = is_match ? value(entry, name) : std::wstring();
        if (!found.empty())
            return found;
    }
    return std::wstring();
}

// Returns the attribute, or without one the text of the first child of that name that has a text.
std::wstring config_model_t::value(const element_t& element, const std::wstring& name)
{
    const auto attribute = element.attributes.find(name);
    if (attribute != element.attributes.end())
        return attribute->second;
    for (const element_t& child : element.children)
        if (child.name == name && !child.text.empty())
            return child.text;
    return std::wstring();
}

std::set<std::wstring> config_model_t::names() const
{
    std::set<std::wstring> names = {L"title_msgid"};
    for (const element_t& entry : m_root.children) {
        for (const auto& attribute : entry.attributes)
            names.insert(attribute.first);
        for (const element_t& child : entry.children)
            names.insert(child.name);
    }
    return names;
}

std::set<std::wstring> config_model_t::values(const std::wstring& name) const
{
    std::set<std::wstring> values = {L"", L"other"};
    for (const element_t& entry : m_root.children)
        values.insert(value(entry, name));
    return values;
}

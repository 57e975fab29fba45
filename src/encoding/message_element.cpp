#include "encoding/message_element.h"

#include "core/message_access.h"
#include "encoding/element_composer.h"
#include "encoding/element_names.h"
#include "encoding/node_text.h"
#include "encoding/severity_text.h"
#include "xml/handles.h"
#include "xml/utf8.h"

#include <boost/make_shared.hpp>

#include <cstddef>
#include <map>
#include <string>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

typedef std::map<std::wstring, std::wstring> string_map_t;

// libxml2 counts the bytes of a write in an int.
const std::size_t max_raw_bytes = 1073741824;

// Reads one element; empty once a text has exceeded a limit.
class element_reader_t
{
public:
    boost::shared_ptr<message_t> read(const xmlNode& element)
    {
        const auto message = boost::make_shared<message_t>();
        message_t::message_content_t& content = message_access_t::content(*message);
        if (xmlStrEqual(element.name, to_xml(element_names::msg)))
            read_attributes(element, content.attributes);
        for (const xmlNode* child = element.children; child && m_is_within_limits;
             child = child->next)
            if (child->type == XML_ELEMENT_NODE)
                read_child(*child, *message);
        return m_is_within_limits ? message : boost::shared_ptr<message_t>();
    }

private:
    void read_attributes(const xmlNode& element, string_map_t& attributes)
    {
        for (const xmlAttr* attribute = element.properties; attribute; attribute = attribute->next)
            attributes.emplace_hint(attributes.end(), utf8_to_wide(from_xml(attribute->name)),
                                    read_text(attribute->children));
    }

    void read_child(const xmlNode& child, message_t& message)
    {
        message_t::message_content_t& content = message_access_t::content(message);
        read_utf8(child.children);
        if (xmlStrEqual(child.name, to_xml(element_names::severity)))
            message.set_severity(parse_severity(m_utf8));
        else if (xmlStrEqual(child.name, to_xml(element_names::type)))
            message_access_t::type(message) = utf8_to_wide(m_utf8);
        else if (xmlStrEqual(child.name, to_xml(element_names::arg)))
            add_arg(child, content);
        else
            content.elements.emplace_hint(content.elements.end(),
                                          utf8_to_wide(from_xml(child.name)), utf8_to_wide(m_utf8));
    }

    void add_arg(const xmlNode& arg, message_t::message_content_t& content)
    {
        std::wstring text = utf8_to_wide(m_utf8);
        std::wstring name = read_arg_name(arg);
        if (name.empty())
            name = generate_arg_name(content.next_arg_number);
        content.args.emplace_hint(content.args.end(), std::move(name), std::move(text));
    }

    std::wstring read_arg_name(const xmlNode& arg)
    {
        const xmlChar* const key = to_xml(element_names::arg_name);
        const xmlAttr* const attribute = xmlHasProp(&arg, key);
        if (!attribute)
            return std::wstring();
        if (attribute->type == XML_ATTRIBUTE_NODE)
            return read_text(attribute->children);
        // A default that the document type declares.
        const xml_string_t value(xmlGetProp(&arg, key));
        return value ? utf8_to_wide(from_xml(value.get())) : std::wstring();
    }

    std::wstring read_text(const xmlNode* first)
    {
        read_utf8(first);
        return utf8_to_wide(m_utf8);
    }

    void read_utf8(const xmlNode* first)
    {
        m_utf8.clear();
        m_is_within_limits = m_is_within_limits && m_node_text.append(first, m_utf8);
    }

    node_text_t m_node_text;
    std::string m_utf8; ///< the text of the node that is being read
    bool m_is_within_limits = true;
};

} // namespace

bool write_message_element(boost::shared_ptr<message_t> message, xmlTextWriterPtr writer)
{
    text_buffer_t<char> element;
    append_message_element(*message, 1, element);
    return write_raw(std::string_view(element.data(), element.size()), writer);
}

bool write_raw(std::string_view bytes, xmlTextWriterPtr writer)
{
    bool is_written = true;
    while (is_written && !bytes.empty()) {
        const std::string_view next = bytes.substr(0, max_raw_bytes);
        is_written = xmlTextWriterWriteRawLen(writer, to_xml(next.data()),
                                              static_cast<int>(next.size())) >= 0;
        bytes.remove_prefix(next.size());
    }
    return is_written;
}

boost::shared_ptr<message_t> read_message_element(const xmlNode* node)
{
    return node ? element_reader_t().read(*node) : boost::shared_ptr<message_t>();
}

} // namespace velmoext_1_4_8

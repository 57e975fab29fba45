#include "message_element.h"

#include "message_access.h"
#include "message_format.h"
#include "node_text.h"
#include "reader_limits.h"
#include "severity_text.h"
#include "xml_text.h"

#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

typedef std::map<std::wstring, std::wstring> texts_t;
using ROVA_2_18::strings::utf8_to_utf16;

// Writes one element. What a reader would stumble over is left out, so that it costs only itself;
// the writer itself refuses no name but an empty one.
class element_writer_t
{
public:
    explicit element_writer_t(xmlTextWriterPtr writer) : m_writer(writer) {}

    bool write(const message_t& message)
    {
        if (xmlTextWriterStartElement(m_writer, to_xml(message_format::msg)) < 0)
            return false;
        try {
            write_children(message);
        } catch (...) {
            // What follows must not end up inside this element.
            xmlTextWriterEndElement(m_writer);
            throw;
        }
        return xmlTextWriterEndElement(m_writer) >= 0;
    }

private:
    // No element but the message's own is open where memory can run out.
    void write_children(const message_t& message)
    {
        write_content(message_access::content(message));
        write_element(message_format::type, message.get_type());
        const std::wstring severity = severity_text(message.get_severity());
        if (!severity.empty())
            write_element(message_format::severity, severity);
    }

    bool write_content(const message_t::message_content_t& content)
    {
        return write_each(content.attributes, &element_writer_t::write_attribute_of_key) &&
               write_each(content.args, &element_writer_t::write_arg) &&
               write_each(content.elements, &element_writer_t::write_element_of_key);
    }

    bool write_each(const texts_t& texts,
                    bool (element_writer_t::*write_one)(const std::wstring&, const std::wstring&))
    {
        return std::all_of(texts.begin(), texts.end(), [&](const auto& text) {
            return (this->*write_one)(text.first, text.second);
        });
    }

    bool write_attribute_of_key(const std::wstring& key, const std::wstring& text)
    {
        const std::string name = xml_text(key);
        const std::string value = xml_text(text);
        const bool is_readable = key.empty() || (m_limits.admit_name(key, name) &&
                                                 m_limits.admit_attribute(name, value));
        return !is_readable || write_attribute(name, value);
    }

    bool write_arg(const std::wstring& key, const std::wstring& text)
    {
        const std::string name = xml_text(key);
        const std::string value = xml_text(text);
        return !reader_limits_t::admits_arg(name) ||
               (xmlTextWriterStartElement(m_writer, to_xml(message_format::arg)) >= 0 &&
                write_attribute(message_format::arg_name, name) &&
                xmlTextWriterWriteString(m_writer, to_xml(value)) >= 0 &&
                xmlTextWriterEndElement(m_writer) >= 0);
    }

    bool write_element_of_key(const std::wstring& key, const std::wstring& text)
    {
        const std::string name = xml_text(key);
        const bool is_readable = key.empty() || m_limits.admit_name(key, name);
        return !is_readable || write_element(name, text);
    }

    bool write_attribute(const std::string& name, const std::string& value)
    {
        return xmlTextWriterWriteAttribute(m_writer, to_xml(name), to_xml(value)) >= 0;
    }

    bool write_element(const std::string& name, const std::wstring& text)
    {
        return xmlTextWriterWriteElement(m_writer, to_xml(name), to_xml(xml_text(text))) >= 0;
    }

    xmlTextWriterPtr m_writer;
    reader_limits_t m_limits;
};

// Reads one element; empty once a text was beyond measure, and then for good.
class element_reader_t
{
public:
    boost::shared_ptr<message_t> read(const xmlNode& element)
    {
        const auto message = boost::make_shared<message_t>();
        message_t::message_content_t& content = message_access::content(*message);
        if (xmlStrEqual(element.name, to_xml(message_format::msg)))
            read_attributes(element, content.attributes);
        for (const xmlNode* child = element.children; child && m_is_within_measure;
             child = child->next)
            if (child->type == XML_ELEMENT_NODE)
                read_child(*child, *message);
        return m_is_within_measure ? message : boost::shared_ptr<message_t>();
    }

private:
    void read_attributes(const xmlNode& element, texts_t& attributes)
    {
        for (const xmlAttr* attribute = element.properties; attribute; attribute = attribute->next)
            attributes.emplace(utf8_to_utf16(from_xml(attribute->name)),
                               read_text(attribute->children));
    }

    void read_child(const xmlNode& child, message_t& message)
    {
        message_t::message_content_t& content = message_access::content(message);
        const std::wstring text = read_text(child.children);
        if (xmlStrEqual(child.name, to_xml(message_format::severity)))
            message.set_severity(parse_severity(text));
        else if (xmlStrEqual(child.name, to_xml(message_format::type)))
            message.set_type(text);
        else if (xmlStrEqual(child.name, to_xml(message_format::arg)))
            content.args.emplace(read_arg_name(child, content), text);
        else
            content.elements.emplace(utf8_to_utf16(from_xml(child.name)), text);
    }

    std::wstring read_arg_name(const xmlNode& arg, message_t::message_content_t& content)
    {
        // A default that the document declares has no text of its own, and so does not count.
        const xmlAttr* const attribute = xmlHasProp(&arg, to_xml(message_format::arg_name));
        std::wstring name = attribute ? read_text(attribute->children) : std::wstring();
        if (!name.empty())
            return name;
        return generate_arg_name(content.next_arg_number);
    }

    std::wstring read_text(const xmlNode* first)
    {
        std::string text;
        m_is_within_measure = m_is_within_measure && m_node_text.append(first, text);
        return m_is_within_measure ? utf8_to_utf16(text) : std::wstring();
    }

    node_text_t m_node_text;
    bool m_is_within_measure = true;
};

} // namespace

bool write_message_element(boost::shared_ptr<message_t> message, xmlTextWriterPtr writer)
{
    return element_writer_t(writer).write(*message);
}

boost::shared_ptr<message_t> read_message_element(const xmlNode* node)
{
    return node ? element_reader_t().read(*node) : boost::shared_ptr<message_t>();
}

} // namespace velmoext_1_4_8

#include "encoding/message_element.h"

#include "core/message_access.h"
#include "encoding/element_names.h"
#include "encoding/node_text.h"
#include "encoding/severity_text.h"
#include "xml/reader_limits.h"
#include "xml/wide_text.h"
#include "xml/xml_text.h"

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
const std::size_t largest_kept = 65536;

// The key and the text that are being written; kept by each thread, so that their memory is used
// again.
struct scratch_t
{
    xml_text_t name;
    xml_text_t value;

    // A text of unusual length is not to stay for good.
    void trim()
    {
        scratch_t fresh;
        if (name.utf8().capacity() + value.utf8().capacity() > largest_kept)
            std::swap(*this, fresh);
    }
};

// Writes one element. What a reader would stumble over is left out, so that it costs only itself;
// the writer itself refuses no name but an empty one.
class element_writer_t
{
public:
    element_writer_t(xmlTextWriterPtr writer, scratch_t& scratch, const xml_error_scope_t& silence)
        : m_writer(writer), m_silence(silence), m_name(scratch.name), m_value(scratch.value)
    {}

    bool write(const message_t& message)
    {
        if (!start(element_names::msg))
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
        write_text_element(element_names::type, message_access::type(message));
        const char* const severity = severity_text(message.get_severity());
        if (*severity != '\0' && start(element_names::severity)) {
            xmlTextWriterWriteRaw(m_writer, to_xml(severity));
            xmlTextWriterEndElement(m_writer);
        }
    }

    bool write_content(const message_t::message_content_t& content)
    {
        return write_each(content.attributes, &element_writer_t::write_attribute) &&
               write_each(content.args, &element_writer_t::write_arg) &&
               write_each(content.elements, &element_writer_t::write_element);
    }

    bool write_each(const texts_t& texts,
                    bool (element_writer_t::*write_one)(const std::wstring&, const std::wstring&))
    {
        return std::all_of(texts.begin(), texts.end(), [&](const auto& text) {
            return (this->*write_one)(text.first, text.second);
        });
    }

    bool write_attribute(const std::wstring& key, const std::wstring& text)
    {
        m_name.assign(key);
        m_value.assign(text);
        const bool is_readable = key.empty() || (m_limits.admit_name(key, m_name) &&
                                                 m_limits.admit_attribute(m_name, m_value));
        return !is_readable || xmlTextWriterWriteAttribute(m_writer, to_xml(m_name.utf8()),
                                                           to_xml(m_value.utf8())) >= 0;
    }

    bool write_arg(const std::wstring& key, const std::wstring& text)
    {
        m_name.assign(key);
        m_value.assign(text);
        return !reader_limits_t::admits_arg(m_name) ||
               (start(element_names::arg) &&
                xmlTextWriterWriteAttribute(m_writer, to_xml(element_names::arg_name),
                                            to_xml(m_name.utf8())) >= 0 &&
                write_value() && xmlTextWriterEndElement(m_writer) >= 0);
    }

    bool write_element(const std::wstring& key, const std::wstring& text)
    {
        m_name.assign(key);
        const bool is_readable = key.empty() || m_limits.admit_name(key, m_name);
        return !is_readable || write_text_element(m_name.utf8().c_str(), text);
    }

    bool write_text_element(const char* name, const std::wstring& text)
    {
        m_value.assign(text);
        return start(name) && write_value() && xmlTextWriterEndElement(m_writer) >= 0;
    }

    // Where the writer has no memory to note the element that it began, it goes on as if it had
    // not: what was written of it is ended here.
    bool start(const char* name)
    {
        const int losses = m_silence.hidden_losses();
        if (xmlTextWriterStartElement(m_writer, to_xml(name)) < 0)
            return false;
        const bool is_noted = m_silence.hidden_losses() == losses;
        if (!is_noted)
            xmlTextWriterWriteRaw(m_writer, to_xml("/>"));
        return is_noted;
    }

    // The writer escapes a text in a copy, also one in which there is nothing to escape.
    bool write_value()
    {
        const std::string& text = m_value.utf8();
        if (m_value.is_plain())
            return xmlTextWriterWriteRawLen(m_writer, to_xml(text),
                                            static_cast<int>(text.size())) >= 0;
        return xmlTextWriterWriteString(m_writer, to_xml(text)) >= 0;
    }

    xmlTextWriterPtr m_writer;
    const xml_error_scope_t& m_silence;
    xml_text_t& m_name;
    xml_text_t& m_value;
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
        if (xmlStrEqual(element.name, to_xml(element_names::msg)))
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
            attributes.emplace_hint(attributes.end(), wide_text(from_xml(attribute->name)),
                                    read_text(attribute->children));
    }

    void read_child(const xmlNode& child, message_t& message)
    {
        message_t::message_content_t& content = message_access::content(message);
        read_utf8(child.children);
        if (xmlStrEqual(child.name, to_xml(element_names::severity)))
            message.set_severity(parse_severity(m_utf8));
        else if (xmlStrEqual(child.name, to_xml(element_names::type)))
            message_access::type(message) = decode();
        else if (xmlStrEqual(child.name, to_xml(element_names::arg)))
            add_arg(child, content);
        else
            content.elements.emplace_hint(content.elements.end(), wide_text(from_xml(child.name)),
                                          decode());
    }

    void add_arg(const xmlNode& arg, message_t::message_content_t& content)
    {
        std::wstring text = decode();
        content.args.emplace_hint(content.args.end(), read_arg_name(arg, content), std::move(text));
    }

    std::wstring read_arg_name(const xmlNode& arg, message_t::message_content_t& content)
    {
        // A default that the document declares has no text of its own, and so does not count.
        const xmlAttr* const attribute = xmlHasProp(&arg, to_xml(element_names::arg_name));
        std::wstring name = attribute ? read_text(attribute->children) : std::wstring();
        if (!name.empty())
            return name;
        return generate_arg_name(content.next_arg_number);
    }

    std::wstring read_text(const xmlNode* first)
    {
        read_utf8(first);
        return decode();
    }

    void read_utf8(const xmlNode* first)
    {
        m_utf8.clear();
        m_is_within_measure = m_is_within_measure && m_node_text.append(first, m_utf8);
    }

    std::wstring decode() const
    {
        return m_is_within_measure ? wide_text(m_utf8.data(), m_utf8.size()) : std::wstring();
    }

    node_text_t m_node_text;
    std::string m_utf8; ///< the text of the node that is being read
    bool m_is_within_measure = true;
};

} // namespace

bool write_message_element(boost::shared_ptr<message_t> message, xmlTextWriterPtr writer,
                           const xml_error_scope_t& silence)
{
    thread_local scratch_t scratch;
    const bool is_written = element_writer_t(writer, scratch, silence).write(*message);
    scratch.trim();
    return is_written;
}

boost::shared_ptr<message_t> read_message_element(const xmlNode* node)
{
    return node ? element_reader_t().read(*node) : boost::shared_ptr<message_t>();
}

} // namespace velmoext_1_4_8

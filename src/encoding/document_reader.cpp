#include "encoding/document_reader.h"

#include "encoding/element_names.h"
#include "encoding/message_element.h"
#include "xml/declared_defaults.h"

namespace velmoext_1_4_8
{
namespace
{

bool is_message(const xmlNode& node)
{
    return node.type == XML_ELEMENT_NODE && xmlStrEqual(node.name, to_xml(element_names::msg));
}

boost::shared_ptr<message_t> read_first_message(xmlTextReaderPtr reader, std::size_t document_size)
{
    while (xmlTextReaderNext(reader) == 1) {
        const xmlNode& node = *xmlTextReaderCurrentNode(reader);
        if (declares_too_many_defaults(node, document_size))
            break;
        if (is_message(node))
            return read_message_element(xmlTextReaderExpand(reader));
    }
    return boost::shared_ptr<message_t>();
}

} // namespace

boost::shared_ptr<message_t> document_reader_t::read(const std::string& document)
{
    m_bytes_read += document.size();
    if (!open(document))
        return boost::shared_ptr<message_t>();
    boost::shared_ptr<message_t> message = read_first_message(m_reader.get(), document.size());
    xmlTextReaderClose(m_reader.get());
    return message;
}

bool document_reader_t::open(const std::string& document)
{
    const auto size = static_cast<int>(document.size());
    if (m_reader)
        return xmlReaderNewMemory(m_reader.get(), document.data(), size, nullptr, encoding,
                                  options) == 0;
    m_reader.reset(xmlReaderForMemory(document.data(), size, nullptr, encoding, options));
    return m_reader != nullptr;
}

} // namespace velmoext_1_4_8

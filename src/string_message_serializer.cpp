#include <velmoext1/string_message_serializer.h>

#include "message_element.h"
#include "message_format.h"
#include "xml_handles.h"
#include "xml_library.h"
#include "xml_silence.h"

#include <rova/strings.h>

#include <libxml/parser.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{
namespace
{

const char* const encoding = "UTF-8";
const int reader_options = XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// Each element gets each declared default looked at, whether it takes it or not: this many such
// looks take a fraction of a second.
const std::size_t most_defaults_looked_at = 200000;
const std::size_t smallest_element = sizeof("<a/>") - 1;

bool has_too_many_defaults(const xmlNode& node, std::size_t document_size)
{
    std::size_t defaults = 0;
    if (node.type == XML_DTD_NODE)
        for (const xmlNode* child = node.children; child; child = child->next)
            defaults += child->type == XML_ATTRIBUTE_DECL ? 1 : 0;
    return defaults * (document_size / smallest_element) > most_defaults_looked_at;
}

// A few bytes of parameter entities can make libxml2 build gigabytes before it hands over the first
// node. Their references stand between the document type's beginning and its closing bracket, which
// is no further on than the last one of all.
bool refers_to_parameter_entities(const std::string& document)
{
    const std::size_t end = document.rfind(']');
    const std::size_t begin = std::min(document.find("<!DOCTYPE"), end);
    for (std::size_t at = document.find('%', begin); at < end; at = document.find('%', at + 1)) {
        const std::size_t name_end = document.find_first_of("; \t\r\n%\"'<>", at + 1);
        if (name_end < end && name_end > at + 1 && document[name_end] == ';')
            return true;
    }
    return false;
}

// By default libxml2 lets a buffer grow by a few kilobytes at a time, which takes the square of a
// long text.
xml_buffer_t create_buffer()
{
    xml_buffer_t buffer(xmlBufferCreate());
    if (buffer)
        xmlBufferSetAllocationScheme(buffer.get(), XML_BUFFER_ALLOC_DOUBLEIT);
    return buffer;
}

bool is_message(const xmlNode& node)
{
    return node.type == XML_ELEMENT_NODE && xmlStrEqual(node.name, to_xml(message_format::msg));
}

boost::shared_ptr<message_t> read_first_message(xmlTextReaderPtr reader, std::size_t document_size)
{
    while (xmlTextReaderNext(reader) == 1) {
        const xmlNode& node = *xmlTextReaderCurrentNode(reader);
        if (has_too_many_defaults(node, document_size))
            break;
        if (is_message(node))
            return read_message_element(xmlTextReaderExpand(reader));
    }
    return boost::shared_ptr<message_t>();
}

} // namespace

std::wstring
string_message_serializer_t::message_to_xml_string(boost::shared_ptr<message_t> message)
{
    initialize_xml_library();
    const xml_silence_t silence;
    const xml_buffer_t buffer = create_buffer();
    const xml_writer_t writer(xmlNewTextWriterMemory(buffer.get(), 0));
    if (!writer)
        return std::wstring();
    xmlTextWriterSetIndent(writer.get(), 1);
    xmlTextWriterStartDocument(writer.get(), nullptr, encoding, nullptr);
    write_message_element(message, writer.get());
    if (xmlTextWriterFlush(writer.get()) < 0)
        return std::wstring();
    return ROVA_2_18::strings::utf8_to_utf16(from_xml(xmlBufferContent(buffer.get())));
}

boost::shared_ptr<message_t>
string_message_serializer_t::xml_string_to_message(const std::wstring& text)
{
    // XML knows no zero character, but libxml2 would take one for a sign of another encoding.
    if (text.find(L'\0') != std::wstring::npos)
        return boost::shared_ptr<message_t>();
    const std::string document = ROVA_2_18::strings::utf16_to_utf8(text);
    if (document.size() > INT_MAX || refers_to_parameter_entities(document))
        return boost::shared_ptr<message_t>();
    initialize_xml_library();
    const xml_silence_t silence;
    const xml_reader_t reader(xmlReaderForMemory(document.data(), static_cast<int>(document.size()),
                                                 nullptr, encoding, reader_options));
    return reader ? read_first_message(reader.get(), document.size())
                  : boost::shared_ptr<message_t>();
}

} // namespace velmoext_1_4_8

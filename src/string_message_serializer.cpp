#include <velmoext1/string_message_serializer.h>

#include "message_element.h"
#include "message_format.h"
#include "xml_handles.h"
#include "xml_library.h"

#include <rova/strings.h>

#include <libxml/parser.h>

#include <climits>

namespace velmoext_1_4_8
{
namespace
{

const char* const encoding = "UTF-8";
const int reader_options = XML_PARSE_RECOVER | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// With the options alone libxml2 still prints some of its errors.
void ignore_error(void* /*context*/, xmlErrorPtr /*error*/) {}

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

boost::shared_ptr<message_t> read_first_message(xmlTextReaderPtr reader)
{
    while (xmlTextReaderNext(reader) == 1) {
        if (is_message(*xmlTextReaderCurrentNode(reader)))
            return read_message_element(xmlTextReaderExpand(reader));
    }
    return boost::shared_ptr<message_t>();
}

} // namespace

std::wstring
string_message_serializer_t::message_to_xml_string(boost::shared_ptr<message_t> message)
{
    initialize_xml_library();
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
    const std::string document = ROVA_2_18::strings::utf16_to_utf8(text);
    if (document.size() > INT_MAX)
        return boost::shared_ptr<message_t>();
    initialize_xml_library();
    const xml_reader_t reader(xmlReaderForMemory(document.data(), static_cast<int>(document.size()),
                                                 nullptr, encoding, reader_options));
    if (!reader)
        return boost::shared_ptr<message_t>();
    xmlTextReaderSetStructuredErrorHandler(reader.get(), ignore_error, nullptr);
    return read_first_message(reader.get());
}

} // namespace velmoext_1_4_8

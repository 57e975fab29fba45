// Any message is written byte for byte as libxml2's writer writes it, in a document and in a log,
// and the document can be read.
//
// An input has one field of the message per line: a letter, a blank and the field.
//
//     t TYPE      s SEVERITY    n NUMBER
//     a ARGUMENT=TEXT    @ ATTRIBUTE=TEXT    e ELEMENT=TEXT
#include "document_oracle.h"
#include "encoding/message_element.h"
#include "fuzz_target.h"
#include "input_text.h"
#include "message_fields.h"
#include "quiet_xml.h"
#include "require.h"
#include "writer_oracle.h"
#include "xml_strings.h"

#include <velmoext1/string_message_serializer.h>

#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <libxml/xmlwriter.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace
{

using namespace velmoext_1_4_8;
using ROVA_2_18::strings::utf16_to_utf8;

std::int32_t to_number(const std::string& text)
{
    return static_cast<std::int32_t>(std::strtoll(text.c_str(), nullptr, 10));
}

void add_text(string_map_t& texts, const std::string& field)
{
    const auto parts = split_once(field, '=');
    texts[to_wide(parts.first)] = to_wide(parts.second);
}

void add_field(message_t& message, message_t::message_content_t& content, char kind,
               const std::string& field)
{
    switch (kind) {
    case 't':
        return message.set_type(to_wide(field));
    case 's':
        return message.set_severity(static_cast<message_t::severity_t>(to_number(field)));
    case 'n':
        content.next_arg_number = to_number(field);
        return;
    case 'a':
        return add_text(content.args, field);
    case '@':
        return add_text(content.attributes, field);
    case 'e':
        return add_text(content.elements, field);
    default:
        return;
    }
}

message_ptr_t make_message(const std::string& fields)
{
    auto message = boost::make_shared<message_t>();
    message_t::message_content_t content;
    for (const std::string& line : split(fields, '\n'))
        if (line.size() >= 2)
            add_field(*message, content, line[0], line.substr(2));
    message->set_content(content);
    return message;
}

void require_document(const message_ptr_t& message)
{
    const std::wstring written = string_message_serializer_t::message_to_xml_string(message);
    require_equal(utf16_to_utf8(written), written_document(*message),
                  "a document is written as libxml2 writes it");
    const message_ptr_t read = string_message_serializer_t::xml_string_to_message(written);
    require_equal(document_oracle_t(written).difference(read), "",
                  "a written document is read as libxml2 reads it");
    require(read != nullptr, "a written document can be read");
    require(read->get_type() == writable_text(message->get_type()), "the type is preserved");
}

// The caller writes the line break after the root's start tag.
void require_log(const message_ptr_t& message)
{
    const std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(xmlBufferCreate(),
                                                                      xmlBufferFree);
    std::unique_ptr<xmlTextWriter, decltype(&xmlFreeTextWriter)> writer(
        xmlNewTextWriterMemory(buffer.get(), 0), xmlFreeTextWriter);
    xmlTextWriterSetIndent(writer.get(), 1);
    xmlTextWriterStartDocument(writer.get(), nullptr, "UTF-8", nullptr);
    xmlTextWriterStartElement(writer.get(), BAD_CAST "log");
    xmlTextWriterWriteRaw(writer.get(), BAD_CAST "\n");
    require(write_message_element(message, writer.get()), "an element is written");
    require(write_message_element(message, writer.get()), "an element is written after another");
    xmlTextWriterEndElement(writer.get());
    xmlTextWriterEndDocument(writer.get());
    writer.reset();
    require_equal(from_xml(xmlBufferContent(buffer.get())), written_log({*message, *message}),
                  "a log is written as libxml2 writes it");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    forbid_xml_output();
    const message_ptr_t message = make_message(std::string(data, data + size));
    require_document(message);
    require_log(message);
    return 0;
}

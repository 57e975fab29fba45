#include "plain_writer.h"

namespace bench
{

void write_plain(xmlTextWriterPtr writer, const plain_message_t& message)
{
    xmlTextWriterStartElement(writer, to_xml("msg"));
    for (const auto& [name, text] : message.attributes)
        xmlTextWriterWriteAttribute(writer, to_xml(name), to_xml(text));
    for (const auto& [name, text] : message.args) {
        xmlTextWriterStartElement(writer, to_xml("arg"));
        xmlTextWriterWriteAttribute(writer, to_xml("name"), to_xml(name));
        xmlTextWriterWriteString(writer, to_xml(text));
        xmlTextWriterEndElement(writer);
    }
    for (const auto& [name, text] : message.elements)
        xmlTextWriterWriteElement(writer, to_xml(name), to_xml(text));
    xmlTextWriterWriteElement(writer, to_xml("type"), to_xml(message.type));
    xmlTextWriterWriteElement(writer, to_xml("severity"), to_xml(message.severity));
    xmlTextWriterEndElement(writer);
}

} // namespace bench

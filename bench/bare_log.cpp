#include "bare_log.h"

#include "plain_writer.h"
#include "runner.h"

#include <libxml/parser.h>

#include <fcntl.h>
#include <unistd.h>

namespace bench
{
namespace
{

xmlSAXHandler make_empty_callbacks()
{
    xmlSAXHandler callbacks = {};
    callbacks.startDocument = [](void*) {
    };
    callbacks.endDocument = [](void*) {
    };
    callbacks.startElement = [](void*, const xmlChar*, const xmlChar**) {
    };
    callbacks.endElement = [](void*, const xmlChar*) {
    };
    callbacks.characters = [](void*, const xmlChar*, int) {
    };
    callbacks.initialized = 1;
    return callbacks;
}

} // namespace

void write_bare_log(const workload_t& workload, std::size_t count, const std::string& file_name)
{
    const int descriptor =
        ::open(file_name.c_str(), O_WRONLY | O_CREAT | O_TRUNC, S_IRUSR | S_IWUSR);
    require(descriptor != -1, "the log cannot be written");
    xmlTextWriter* const writer = xmlNewTextWriter(xmlOutputBufferCreateFd(descriptor, nullptr));
    xmlTextWriterSetIndent(writer, 1);
    xmlTextWriterStartDocument(writer, nullptr, "UTF-8", nullptr);
    xmlTextWriterStartElement(writer, to_xml("log"));
    for (std::size_t i = 0; i < count; ++i)
        write_plain(writer, *workload.plain()[i]);
    xmlTextWriterEndElement(writer);
    xmlTextWriterEndDocument(writer);
    xmlFreeTextWriter(writer);
    ::close(descriptor);
}

bool parse_bare_log(const std::string& text)
{
    xmlSAXHandler callbacks = make_empty_callbacks();
    return xmlSAXUserParseMemory(&callbacks, nullptr, text.data(), static_cast<int>(text.size())) ==
           0;
}

} // namespace bench

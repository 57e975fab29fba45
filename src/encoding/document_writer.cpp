#include "encoding/document_writer.h"

#include "encoding/element_names.h"
#include "encoding/message_element.h"

#include <cstddef>

namespace velmoext_1_4_8
{
namespace
{

const char encoding[] = "UTF-8";

} // namespace

std::string make_xml_declaration()
{
    const xml_buffer_t buffer(xmlBufferCreate());
    const xml_writer_t writer(xmlNewTextWriterMemory(buffer.get(), 0));
    if (!writer || xmlTextWriterStartDocument(writer.get(), nullptr, encoding, nullptr) < 0 ||
        xmlTextWriterFlush(writer.get()) < 0)
        return std::string();
    return from_xml(xmlBufferContent(buffer.get()));
}

document_writer_t::document_writer_t() : m_declaration(make_xml_declaration())
{
    xmlOutputBufferPtr buffer = xmlOutputBufferCreateIO(append, nullptr, this, nullptr);
    m_writer.reset(buffer ? xmlNewTextWriter(buffer) : nullptr);
    if (!m_writer)
        xmlOutputBufferClose(buffer);
    else
        xmlTextWriterSetIndent(m_writer.get(), 1);
}

bool document_writer_t::write(const boost::shared_ptr<message_t>& message,
                              const xml_error_scope_t& silence)
{
    if (!m_writer || m_declaration.empty())
        return false;
    m_document = m_declaration;
    write_message_element(message, m_writer.get(), silence);
    const bool is_written = xmlTextWriterFlush(m_writer.get()) >= 0;
    if (m_failure)
        std::rethrow_exception(m_failure);
    return is_written && !silence.has_lacked_memory();
}

// Nothing thrown may fly through libxml2's frames.
int document_writer_t::append(void* writer, const char* bytes, int count)
{
    auto& self = *static_cast<document_writer_t*>(writer);
    try {
        self.m_document.append(bytes, static_cast<std::size_t>(count));
        return count;
    } catch (...) {
        self.m_failure = std::current_exception();
        return -1;
    }
}

} // namespace velmoext_1_4_8

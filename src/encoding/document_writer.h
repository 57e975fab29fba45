#pragma once

#include "xml/error_scope.h"
#include "xml/handles.h"

#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <exception>
#include <string>

namespace velmoext_1_4_8
{

/// The declaration that stands before everything else, with the end of its line; empty where
/// libxml2 cannot make it.
std::string make_xml_declaration();

/// Writes messages as documents, one after the other, with one libxml2 writer: to make one and to
/// free it takes about a sixth of the time of a message.
class document_writer_t
{
public:
    document_writer_t();
    document_writer_t(const document_writer_t&) = delete;
    document_writer_t& operator=(const document_writer_t&) = delete;
    ~document_writer_t() = default;

    /// False where libxml2 refuses, also for want of memory. After that, and after anything thrown,
    /// this writer is not to be used any more.
    bool write(const boost::shared_ptr<message_t>& message, const xml_error_scope_t& silence);

    /// What was written last.
    const std::string& document() const { return m_document; }

private:
    static int append(void* writer, const char* bytes, int count);

    const std::string m_declaration;
    std::string m_document;
    std::exception_ptr m_failure; ///< what was thrown beneath libxml2
    xml_writer_t m_writer;        ///< appends to m_document
};

} // namespace velmoext_1_4_8

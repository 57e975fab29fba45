#include "encoding/document_parser.h"

#include "encoding/element_names.h"
#include "encoding/message_element.h"
#include "xml/cost.h"
#include "xml/error_scope.h"
#include "xml/handles.h"
#include "xml/library.h"
#include "xml/scanner.h"

#include <libxml/SAX2.h>

#include <algorithm>
#include <cstddef>

namespace velmoext_1_4_8
{
namespace
{

const char encoding[] = "UTF-8";
const int options = XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC;

// libxml2's text reader feeds its parser in the same chunks: first the bytes that determine the
// encoding. Chunk boundaries determine how much of a malformed document libxml2 reads.
const std::size_t first_chunk = 4;
const std::size_t max_small_chunk = 512;

// After this number of bytes, chunks end between two tokens, or within long text: libxml2 scans any
// other unfinished token again with each chunk.
const std::size_t max_bytes_in_small_chunks = 65536;
const std::size_t max_text_chunk = 65536;

class push_parser_t
{
public:
    explicit push_parser_t(const std::string& document) : m_document(document), m_scanner(document)
    {}

    parsed_document_t parse()
    {
        parsed_document_t parsed;
        const markup_t markup = inspect_markup(m_document, parse_t::tree);
        parsed.refusal = m_document.size() > limits::max_document_bytes ? refusal_t::document_size
                                                                        : markup.refusal;
        if (parsed.refusal != refusal_t::none || !open())
            return parsed;
        // libxml2 can be quadratic in what follows a fault.
        m_end = std::min(markup.well_formed_bytes + max_small_chunk, m_document.size());
        if (feed_until_complete()) {
            parsed.message = read_message_element(xmlDocGetRootElement(m_parser->myDoc));
            parsed.refusal = parsed.message ? refusal_t::none : refusal_t::entity_text;
        }
        return parsed;
    }

private:
    bool open()
    {
        m_fed_bytes = std::min(first_chunk, m_document.size());
        m_parser.reset(xmlCreatePushParserCtxt(nullptr, nullptr, nullptr, 0, nullptr));
        if (!m_parser || xmlCtxtResetPush(m_parser.get(), m_document.data(),
                                          static_cast<int>(m_fed_bytes), nullptr, encoding) != 0)
            return false;
        xmlCtxtUseOptions(m_parser.get(), options);
        m_parser->_private = this;
        m_parser->sax->startElementNs = on_start_element;
        m_parser->sax->endElementNs = on_end_element;
        m_parser->sax->getParameterEntity = on_parameter_entity;
        return true;
    }

    // As libxml2's text reader does: to the end of the document, or until a comment or an
    // instruction follows the element, unless the element begins and ends in one chunk.
    bool feed_until_complete()
    {
        bool was_open = false;
        while (m_fed_bytes < m_end) {
            if (!feed(next_chunk_size(), false))
                return false;
            if (was_open && m_is_complete && xmlDocGetRootElement(m_parser->myDoc)->next)
                return true;
            was_open = was_open || m_parser->node;
        }
        return feed(0, true) && m_is_complete;
    }

    std::size_t next_chunk_size()
    {
        const std::size_t left = m_end - m_fed_bytes;
        if (m_fed_bytes < max_bytes_in_small_chunks)
            return std::min(max_small_chunk, left);
        bool is_over = false;
        while (!is_over && scanned() < m_fed_bytes + max_small_chunk) {
            const auto token = m_scanner.next();
            m_scanner.finish_start_tag();
            m_is_in_text = token == scanner_t::token_t::text;
            is_over = token == scanner_t::token_t::end;
        }
        const std::size_t size = is_over ? left : scanned() - m_fed_bytes;
        return std::min({size, left, m_is_in_text ? max_text_chunk : left});
    }

    std::size_t scanned() const
    {
        return static_cast<std::size_t>(m_scanner.position() - m_document.data());
    }

    bool feed(std::size_t size, bool is_last)
    {
        const int status = xmlParseChunk(m_parser.get(), m_document.data() + m_fed_bytes,
                                         static_cast<int>(size), is_last ? 1 : 0);
        m_fed_bytes += size;
        return status == XML_ERR_OK && m_parser->wellFormed && !m_has_other_root;
    }

    static push_parser_t& self(void* context)
    {
        return *static_cast<push_parser_t*>(static_cast<xmlParserCtxt*>(context)->_private);
    }

    static const xmlNode* node(void* context) { return static_cast<xmlParserCtxt*>(context)->node; }

    static void on_start_element(void* context, const xmlChar* name, const xmlChar* prefix,
                                 const xmlChar* uri, int namespace_count,
                                 const xmlChar** namespaces, int attribute_count, int default_count,
                                 const xmlChar** attributes)
    {
        const bool is_root = !node(context);
        xmlSAX2StartElementNs(context, name, prefix, uri, namespace_count, namespaces,
                              attribute_count, default_count, attributes);
        if (is_root)
            self(context).m_has_other_root =
                !node(context) || !xmlStrEqual(node(context)->name, to_xml(element_names::msg));
    }

    static void on_end_element(void* context, const xmlChar* name, const xmlChar* prefix,
                               const xmlChar* uri)
    {
        xmlSAX2EndElementNs(context, name, prefix, uri);
        self(context).m_is_complete = !node(context);
    }

    // None is expanded, whatever the scanner has overlooked.
    static xmlEntityPtr on_parameter_entity(void* /*context*/, const xmlChar* /*name*/)
    {
        return nullptr;
    }

    const std::string& m_document;
    scanner_t m_scanner;
    xml_parser_t m_parser;
    std::size_t m_fed_bytes = 0; ///< bytes
    std::size_t m_end = 0;       ///< of what is fed
    bool m_is_in_text = false;
    bool m_has_other_root = false;
    bool m_is_complete = false;
};

} // namespace

parsed_document_t parse_document(const std::string& document)
{
    initialize_xml_library();
    const xml_error_scope_t errors;
    const parsed_document_t parsed = push_parser_t(document).parse();
    return errors.has_run_out_of_memory() ? parsed_document_t() : parsed;
}

} // namespace velmoext_1_4_8

#include <velmoext1/string_message_serializer.h>

#include "encoding/document_reader.h"
#include "encoding/document_writer.h"
#include "encoding/long_document.h"
#include "xml/declared_encoding.h"
#include "xml/document_type.h"
#include "xml/error_scope.h"
#include "xml/library.h"
#include "xml/start_tags.h"

#include <rova/strings.h>

#include <climits>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

// A thread keeps what it reads and writes with from one message to the next, up to this size of a
// document.
const std::size_t largest_kept = 65536;

bool is_bearable(const std::string& document)
{
    return document.size() <= INT_MAX && !hides_its_markup(document) &&
           !refers_to_parameter_entities(document) && !has_long_document_type(document) &&
           !has_too_many_namespaces(document);
}

// A libxml2 reader passes over one in its first document only.
void leave_out_byte_order_marks(std::string& document)
{
    static const std::string mark = "\xEF\xBB\xBF";
    std::size_t end = 0;
    while (document.compare(end, mark.size(), mark) == 0)
        end += mark.size();
    document.erase(0, end);
}

boost::shared_ptr<message_t> read_short_document(const std::string& document,
                                                 const xml_error_scope_t& silence)
{
    thread_local std::unique_ptr<document_reader_t> kept;
    auto reader = kept ? std::move(kept) : std::make_unique<document_reader_t>();
    boost::shared_ptr<message_t> message = reader->read(document);
    if (message && !silence.has_lacked_memory() && reader->is_fresh())
        kept = std::move(reader);
    return message;
}

} // namespace

std::wstring
string_message_serializer_t::message_to_xml_string(boost::shared_ptr<message_t> message)
{
    initialize_xml_library();
    thread_local std::unique_ptr<document_writer_t> kept;
    const xml_error_scope_t silence;
    auto writer = kept ? std::move(kept) : std::make_unique<document_writer_t>();
    if (!writer->write(message, silence))
        return std::wstring();
    std::wstring text = ROVA_2_18::strings::utf8_to_utf16(writer->document());
    // Only one that came through well, and without much memory, writes the next message.
    if (writer->document().size() <= largest_kept)
        kept = std::move(writer);
    return text;
}

boost::shared_ptr<message_t>
string_message_serializer_t::xml_string_to_message(const std::wstring& text)
{
    initialize_xml_library();
    // XML knows no zero character, but libxml2 would take one for a sign of another encoding.
    if (text.find(L'\0') != std::wstring::npos)
        return boost::shared_ptr<message_t>();
    std::string document = ROVA_2_18::strings::utf16_to_utf8(text);
    leave_out_byte_order_marks(document);
    leave_out_excess_attributes(document);
    if (!is_bearable(document))
        return boost::shared_ptr<message_t>();
    const xml_error_scope_t silence;
    const boost::shared_ptr<message_t> message = document.size() <= largest_kept
                                                     ? read_short_document(document, silence)
                                                     : read_long_document(document);
    return silence.has_lacked_memory() ? boost::shared_ptr<message_t>() : message;
}

} // namespace velmoext_1_4_8

// The message of any text is the one that libxml2's reader finds in it, or none if the text may be
// refused. A document that the library recognizes gives the same message as when it is parsed.
#include "document_oracle.h"
#include "encoding/document_parser.h"
#include "encoding/message_recognizer.h"
#include "fuzz_target.h"
#include "message_fields.h"
#include "quiet_xml.h"
#include "require.h"
#include "writer_oracle.h"

#include <velmoext1/string_message_serializer.h>

#include <rova/strings.h>

#include <string>

namespace
{

using namespace velmoext_1_4_8;
using ROVA_2_18::strings::utf16_to_utf8;

void require_same_recognized(const std::wstring& text)
{
    const std::string document = utf16_to_utf8(text);
    if (const message_ptr_t recognized = recognize_document(document))
        require_equal(fields_of(recognized), fields_of(parse_document(document).message),
                      "a document is recognized as it is parsed");
}

void require_written_as_by_libxml2(const message_ptr_t& message)
{
    require_equal(utf16_to_utf8(string_message_serializer_t::message_to_xml_string(message)),
                  written_document(*message), "a message is written as libxml2 writes it");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    forbid_xml_output();
    const std::wstring text = ROVA_2_18::strings::utf8_to_utf16(std::string(data, data + size));
    const document_oracle_t oracle(text);
    const message_ptr_t message = string_message_serializer_t::xml_string_to_message(text);
    require_equal(oracle.difference(message), "", "a document is read as libxml2 reads it");
    require_same_recognized(text);
    if (message)
        require_written_as_by_libxml2(message);
    return 0;
}

#include <velmoext1/string_message_serializer.h>

#include "encoding/document_parser.h"
#include "encoding/element_composer.h"
#include "encoding/message_recognizer.h"

#include <rova/strings.h>

#include <string>

namespace velmoext_1_4_8
{

std::wstring
string_message_serializer_t::message_to_xml_string(boost::shared_ptr<message_t> message)
{
    return compose_document(*message);
}

boost::shared_ptr<message_t>
string_message_serializer_t::xml_string_to_message(const std::wstring& text)
{
    // Zero is not an XML character, but libxml2 would infer another encoding from it.
    if (text.find(L'\0') != std::wstring::npos)
        return boost::shared_ptr<message_t>();
    const std::string document = ROVA_2_18::strings::utf16_to_utf8(text);
    boost::shared_ptr<message_t> message = recognize_document(document);
    return message ? message : parse_document(document).message;
}

} // namespace velmoext_1_4_8

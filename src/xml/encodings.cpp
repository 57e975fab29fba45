#include "xml/encodings.h"

#include "xml/error_scope.h"
#include "xml/handles.h"
#include "xml/library.h"
#include "xml/scanner.h"

#include <libxml/encoding.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <optional>

namespace velmoext_1_4_8
{
namespace
{

struct close_handler_t
{
    void operator()(xmlCharEncodingHandler* handler) const { xmlCharEncCloseFunc(handler); }
};

typedef std::unique_ptr<xmlCharEncodingHandler, close_handler_t> xml_converter_t;

const std::size_t chunk = 512;

bool is_letter(char character)
{
    return ('a' <= character && character <= 'z') || ('A' <= character && character <= 'Z');
}

// XML allows no other names: a document with one is malformed.
bool is_encoding_name(std::string_view name)
{
    static constexpr std::string_view others = "0123456789._-";
    return !name.empty() && is_letter(name.front()) &&
           std::all_of(name.begin(), name.end(), [](char character) {
               return is_letter(character) || others.find(character) != std::string_view::npos;
           });
}

} // namespace

std::string declared_encoding(std::string_view document)
{
    static constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (document.substr(0, byte_order_mark.size()) == byte_order_mark)
        document.remove_prefix(byte_order_mark.size());
    scanner_t scanner(document);
    if (scanner.next() != scanner_t::token_t::instruction || scanner.name() != "xml")
        return std::string();
    const char* const begin = scanner.name().data() + scanner.name().size();
    attribute_scanner_t attributes(begin, scanner.position());
    attribute_t attribute;
    while (attributes.next(attribute))
        if (attribute.name == "encoding" && is_encoding_name(attribute.value))
            return std::string(attribute.value);
    return std::string();
}

bool is_utf8(std::string_view encoding)
{
    static constexpr std::string_view name = "UTF-8";
    return encoding.empty() || std::equal(encoding.begin(), encoding.end(), name.begin(),
                                          name.end(), [](char character, char upper) {
                                              return (character & ~0x20) == upper ||
                                                     character == upper;
                                          });
}

std::optional<std::size_t> convert_to_utf8(std::string_view document, const std::string& encoding,
                                           std::string& utf8, std::size_t sufficient_size,
                                           std::size_t* unconverted)
{
    initialize_xml_library();
    const xml_error_scope_t errors;
    const xml_converter_t converter(xmlFindCharEncodingHandler(encoding.c_str()));
    const xml_buffer_t in(xmlBufferCreate());
    const xml_buffer_t out(xmlBufferCreate());
    bool has_memory = in && out && !errors.has_run_out_of_memory();
    if (has_memory && !converter)
        return std::nullopt;
    utf8.clear();
    std::size_t converted = 0;
    while (has_memory && converted != document.size() && utf8.size() < sufficient_size) {
        const std::string_view next = document.substr(converted, chunk);
        has_memory =
            xmlBufferAdd(in.get(), to_xml(next.data()), static_cast<int>(next.size())) == 0;
        converted += next.size();
        // A chunk can end within a character, which stays for the next one.
        while (has_memory && xmlCharEncInFunc(converter.get(), out.get(), in.get()) > 0) {
            utf8.append(from_xml(xmlBufferContent(out.get())),
                        static_cast<std::size_t>(xmlBufferLength(out.get())));
            xmlBufferEmpty(out.get());
        }
    }
    if (!has_memory || errors.has_run_out_of_memory())
        throw std::bad_alloc();
    if (unconverted)
        *unconverted = static_cast<std::size_t>(xmlBufferLength(in.get()));
    return converted;
}

} // namespace velmoext_1_4_8

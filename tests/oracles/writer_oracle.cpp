#include "writer_oracle.h"

#include "xml_errors.h"
#include "xml_strings.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlwriter.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>

namespace
{

using ROVA_2_18::strings::utf16_to_utf8;
using velmoext_1_4_8::message_t;

typedef std::map<std::wstring, std::wstring> string_map_t;

// ---- characters and names

bool is_between(std::uint32_t first, std::uint32_t value, std::uint32_t last)
{
    return first <= value && value <= last;
}

bool is_writable(std::uint32_t character)
{
    return character == '\t' || character == '\n' || character == '\r' ||
           is_between(0x20, character, 0xD7FF) || is_between(0xE000, character, 0xFFFD) ||
           is_between(0x10000, character, 0x10FFFF);
}

bool is_surrogate(const std::wstring& text, std::size_t at, std::uint32_t first)
{
    return at < text.size() &&
           is_between(first, static_cast<std::uint32_t>(text[at]), first + 0x3FF);
}

bool is_pair(const std::wstring& text, std::size_t at)
{
    return is_surrogate(text, at, 0xD800) && is_surrogate(text, at + 1, 0xDC00);
}

void append_character(std::wstring& text, std::uint32_t character)
{
    if (character < 0x10000) {
        text.push_back(static_cast<wchar_t>(character));
        return;
    }
    text.push_back(static_cast<wchar_t>(0xD7C0 + (character >> 10U)));
    text.push_back(static_cast<wchar_t>(0xDC00 + (character & 0x3FFU)));
}

bool is_writable(const std::wstring& text)
{
    for (std::size_t at = 0; at < text.size(); ++at)
        if (is_pair(text, at))
            ++at;
        else if (!is_writable(static_cast<std::uint32_t>(text[at])))
            return false;
    return true;
}

bool is_simple_name(const std::string& name)
{
    const auto is_letter = [](char c) {
        return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z') || c == '_';
    };
    for (const char c : name)
        if (!is_letter(c) && !('0' <= c && c <= '9') && c != '-' && c != '.')
            return false;
    return is_letter(name.front());
}

typedef std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> tree_t;

tree_t parse(const std::string& document)
{
    return tree_t(xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr,
                                "UTF-8", XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE),
                  xmlFreeDoc);
}

// Accepts any colons.
bool is_name_of_document_type(const std::string& name)
{
    const tree_t tree = parse("<!DOCTYPE " + name + "><a/>");
    const xmlDtd* const type = tree ? xmlGetIntSubset(tree.get()) : nullptr;
    return type != nullptr && from_xml(type->name) == name;
}

bool is_name_in_document(const std::string& name)
{
    const tree_t tree = parse("<" + name + "/>");
    const xmlNode* const root = tree ? xmlDocGetRootElement(tree.get()) : nullptr;
    if (root == nullptr || root->properties != nullptr || root->children != nullptr)
        return false;
    const std::string local = from_xml(root->name);
    return local == name || (root->ns != nullptr && root->ns->prefix != nullptr &&
                             from_xml(root->ns->prefix) + (":" + local) == name);
}

// Whether all releases of libxml2 split the name in the same way. They differ if the text after a
// second colon does not begin a name.
bool is_split_by_each_release(const std::string& name)
{
    const std::size_t first = name.find(':');
    const std::size_t second = first == std::string::npos ? first : name.find(':', first + 1);
    if (first == 0 || second == std::string::npos || second == first + 1 ||
        second + 1 == name.size())
        return true;
    return is_name_of_document_type(name.substr(second + 1)) ||
           !is_name_in_document(name.substr(first + 1, second - first - 1));
}

// Whether libxml2 reads the key as a name. A key that needs a replacement is not one: the
// replacement would be a name character.
bool is_name(const std::wstring& key)
{
    if (!is_writable(key))
        return false;
    const std::string name = utf16_to_utf8(key);
    return is_simple_name(name) || (is_name_in_document(name) && is_split_by_each_release(name));
}

// ---- the calls, in their order

std::string utf8_text(const std::wstring& text)
{
    return utf16_to_utf8(writable_text(text));
}

bool write_attributes(xmlTextWriterPtr writer, const string_map_t& attributes)
{
    std::set<std::string> names;
    for (const auto& [key, text] : attributes) {
        const std::string name = utf16_to_utf8(key);
        if (!key.empty() && (!is_name(key) || !names.insert(name).second))
            continue;
        if (xmlTextWriterWriteAttribute(writer, to_xml(name), to_xml(utf8_text(text))) < 0)
            return false;
    }
    return true;
}

bool write_args(xmlTextWriterPtr writer, const string_map_t& args)
{
    return std::all_of(args.begin(), args.end(), [&](const auto& arg) {
        return xmlTextWriterStartElement(writer, BAD_CAST "arg") >= 0 &&
               xmlTextWriterWriteAttribute(writer, BAD_CAST "name", to_xml(utf8_text(arg.first))) >=
                   0 &&
               xmlTextWriterWriteString(writer, to_xml(utf8_text(arg.second))) >= 0 &&
               xmlTextWriterEndElement(writer) >= 0;
    });
}

bool write_elements(xmlTextWriterPtr writer, const string_map_t& elements)
{
    return std::all_of(elements.begin(), elements.end(), [&](const auto& element) {
        return (!element.first.empty() && !is_name(element.first)) ||
               xmlTextWriterWriteElement(writer, to_xml(utf16_to_utf8(element.first)),
                                         to_xml(utf8_text(element.second))) >= 0;
    });
}

void write_message(xmlTextWriterPtr writer, const message_t& message)
{
    static const std::map<int, const char*> severities = {
        {1, "INFO"}, {2, "WARNING"}, {3, "ERROR"}, {4, "CRITICAL"}};
    xmlTextWriterStartElement(writer, BAD_CAST "msg");
    const message_t::message_content_t content = message.get_content();
    if (write_attributes(writer, content.attributes) && write_args(writer, content.args))
        write_elements(writer, content.elements);
    xmlTextWriterWriteElement(writer, BAD_CAST "type", to_xml(utf8_text(message.get_type())));
    const auto severity = severities.find(message.get_severity());
    if (severity != severities.end())
        xmlTextWriterWriteElement(writer, BAD_CAST "severity", BAD_CAST severity->second);
    xmlTextWriterEndElement(writer);
}

template <typename Write>
std::string written(const Write& write)
{
    const xml_errors_t errors;
    const std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(xmlBufferCreate(),
                                                                      xmlBufferFree);
    {
        const std::unique_ptr<xmlTextWriter, decltype(&xmlFreeTextWriter)> writer(
            xmlNewTextWriterMemory(buffer.get(), 0), xmlFreeTextWriter);
        xmlTextWriterSetIndent(writer.get(), 1);
        xmlTextWriterStartDocument(writer.get(), nullptr, "UTF-8", nullptr);
        write(writer.get());
    }
    return std::string(from_xml(xmlBufferContent(buffer.get())),
                       static_cast<std::size_t>(xmlBufferLength(buffer.get())));
}

} // namespace

std::string written_document(const message_t& message)
{
    return written([&](xmlTextWriterPtr writer) {
        write_message(writer, message);
        xmlTextWriterFlush(writer);
    });
}

std::string written_log(const std::vector<message_t>& messages)
{
    return written([&](xmlTextWriterPtr writer) {
        xmlTextWriterStartElement(writer, BAD_CAST "log");
        for (const message_t& message : messages)
            write_message(writer, message);
        xmlTextWriterEndElement(writer);
        xmlTextWriterEndDocument(writer);
    });
}

std::wstring writable_text(const std::wstring& text)
{
    std::wstring writable;
    for (std::size_t at = 0; at < text.size(); ++at)
        if (is_pair(text, at)) {
            writable.append(text, at, 2);
            ++at;
        } else {
            const auto character = static_cast<std::uint32_t>(text[at]);
            append_character(writable, is_writable(character) ? character : 0xFFFD);
        }
    return writable;
}

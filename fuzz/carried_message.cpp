#include "carried_message.h"

#include "common_rules.h"
#include "quiet_xml.h"

#include <rova/strings.h>

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

namespace
{

using velmoext_1_4_8::message_t;

typedef std::map<std::wstring, std::wstring> texts_t;

const std::array<const wchar_t*, 5> severity_words = {L"", L"INFO", L"WARNING", L"ERROR",
                                                      L"CRITICAL"};
const wchar_t replacement = L'\xFFFD';

bool is_between(std::uint32_t first, std::uint32_t element, std::uint32_t last)
{
    return first <= element && element <= last;
}

// Whether XML 1.0 can carry the character.
bool is_xml_character(std::uint32_t character)
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

// libxml2 itself is asked whether the text can name an element.
bool is_read_as_name(const std::string& name)
{
    const quiet_xml_t quiet;
    const std::string document = "<" + name + "/>";
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> tree(
        xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, "UTF-8",
                      XML_PARSE_NONET),
        xmlFreeDoc);
    const xmlNode* const root = tree ? xmlDocGetRootElement(tree.get()) : nullptr;
    if (root == nullptr)
        return false;
    const auto text = [](const xmlChar* read) {
        return reinterpret_cast<const char*>(read);
    };
    const std::string local = text(root->name);
    return local == name || (root->ns != nullptr && root->ns->prefix != nullptr &&
                             text(root->ns->prefix) + (":" + local) == name);
}

// A replacement makes a text of what was no name.
bool is_name(const std::wstring& key)
{
    const std::wstring carried = carried_text(key);
    return std::count(key.begin(), key.end(), replacement) ==
               std::count(carried.begin(), carried.end(), replacement) &&
           is_read_as_name(ROVA_2_18::strings::utf16_to_utf8(key));
}

// Reads what was written as soon as it is written.
class carrier_t
{
public:
    message_t carry(const message_t& message)
    {
        carry_content(message.get_content());
        m_carried.set_type(carried_text(message.get_type()));
        const std::size_t severity = static_cast<std::uint32_t>(message.get_severity());
        if (severity != 0 && severity < severity_words.size())
            m_carried.set_severity(message.get_severity());
        m_carried.set_content(m_content);
        return m_carried;
    }

private:
    // An empty name ends the content.
    void carry_content(const message_t::message_content_t& content)
    {
        if (content.attributes.count(std::wstring()) != 0)
            return;
        for (const auto& text : content.attributes)
            carry_attribute(text.first, carried_text(text.second));
        for (const auto& text : content.args)
            carry_arg(carried_text(text.first), carried_text(text.second));
        if (content.elements.count(std::wstring()) != 0)
            return;
        for (const auto& text : content.elements)
            carry_element(text.first, carried_text(text.second));
    }

    void carry_attribute(const std::wstring& key, const std::wstring& text)
    {
        if (key != L"xmlns" && is_name(key))
            m_content.attributes.emplace(carried_text(key), text);
    }

    void carry_arg(const std::wstring& name, const std::wstring& text)
    {
        m_content.args.emplace(
            name.empty() ? L"arg" + std::to_wstring(m_content.next_arg_number++) : name, text);
    }

    // The message's own children do not hide from those that stand for its parts.
    void carry_element(const std::wstring& key, const std::wstring& text)
    {
        if (key == L"arg")
            carry_arg(std::wstring(), text);
        else if (key == L"severity")
            m_carried.set_severity(severity_of(text));
        else if (key != L"type" && is_name(key))
            m_content.elements.emplace(carried_text(key), text);
    }

    message_t m_carried;
    message_t::message_content_t m_content;
};

} // namespace

std::wstring carried_text(const std::wstring& text)
{
    std::wstring carried;
    for (std::size_t at = 0; at < text.size(); ++at)
        if (is_pair(text, at)) {
            carried.append(text, at, 2);
            ++at;
        } else {
            const auto element = static_cast<std::uint32_t>(text[at]);
            append_character(carried, is_xml_character(element) ? element : replacement);
        }
    return carried;
}

message_t carried_message(const message_t& message)
{
    return carrier_t().carry(message);
}

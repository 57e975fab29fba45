#include "encoding/text_events.h"

#include "xml/references.h"
#include "xml/utf8.h"

#include <algorithm>

namespace velmoext_1_4_8
{
namespace
{

// libxml2 reports text in chunks of 300 bytes after the first character beyond ASCII.
const std::size_t max_chunk_bytes = 290;

bool is_ascii_byte(char byte)
{
    return static_cast<unsigned char>(byte) < 0x80;
}

std::size_t size_of_event(std::string_view text)
{
    if (text.front() == '&')
        return text.find(';') + 1;
    const bool is_run = is_ascii_byte(text.front());
    const auto* const end = std::find_if(text.begin(), text.end(), [&](char byte) {
        return byte == '&' || (is_run && !is_ascii_byte(byte));
    });
    return static_cast<std::size_t>(end - text.begin());
}

bool has_long_run(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t size = size_of_event(text);
        if (size > max_chunk_bytes && !is_ascii_byte(text.front()))
            return true;
        text.remove_prefix(size);
    }
    return false;
}

} // namespace

text_events_t::text_events_t(std::string_view text) : m_rest(text)
{
    std::wstring decoded;
    m_are_known =
        decode_references(text, text_context_t::element, "&", decoded) && !has_long_run(text);
}

bool text_events_t::next()
{
    if (m_rest.empty())
        return false;
    const std::size_t size = size_of_event(m_rest);
    m_event =
        is_ascii_byte(m_rest.front()) && m_rest.front() != '&' ? m_rest : m_rest.substr(0, size);
    m_rest.remove_prefix(size);
    return true;
}

// Of a reference to '<', nothing is before the first '<'.
std::wstring text_events_t::text() const
{
    if (m_event.front() != '&')
        return utf8_to_wide(m_event);
    std::wstring character;
    decode_references(m_event, text_context_t::element, "&", character);
    return character == L"<" ? std::wstring() : character;
}

} // namespace velmoext_1_4_8

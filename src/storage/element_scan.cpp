#include "storage/element_scan.h"

#include "encoding/element_names.h"
#include "xml/characters.h"
#include "xml/cost.h"
#include "xml/limits.h"
#include "xml/references.h"
#include "xml/scanner.h"
#include "xml/utf8.h"

#include <rova/strings.h>

#include <algorithm>
#include <string>
#include <vector>

namespace velmoext_1_4_8
{
namespace
{

typedef log_reader_t::damage_t damage_t;
typedef scanned_element_t::state_t state_t;
typedef scanner_t::token_t token_t;

// Each search for the end of markup passes over so much of what another one has passed over.
const std::size_t max_hidden_bytes = 4096;

class element_scan_t
{
public:
    element_scan_t(std::string_view text, std::size_t depth, bool is_search)
        : m_text(text), m_scanner(text), m_max_open(limits::max_element_depth - depth),
          m_is_search(is_search)
    {}

    scanned_element_t scan()
    {
        do {
            const token_t token = next_tag();
            if (token == token_t::unfinished)
                return {state_t::unfinished, 0, damage_t::none, m_messages};
            const damage_t damage = token == token_t::start_tag ? open()
                                    : token == token_t::end_tag ? close()
                                                                : damage_t::markup;
            if (damage != damage_t::none)
                return {state_t::malformed, fault_offset(damage), damage, m_messages};
        } while (!m_open.empty());
        return {state_t::complete, position(), damage_t::none, m_messages};
    }

private:
    token_t next_tag()
    {
        token_t token = token_t::text;
        while (token == token_t::text || token == token_t::comment || token == token_t::section ||
               token == token_t::instruction) {
            const std::string_view rest = m_text.substr(position());
            if (begins_document_type(rest) || (m_is_search && hides_message(rest)))
                return token_t::malformed;
            token = m_scanner.next();
        }
        if (token == token_t::start_tag)
            token = m_scanner.finish_start_tag();
        return token == token_t::end ? token_t::unfinished : token;
    }

    damage_t open()
    {
        if (m_open.size() == m_max_open)
            return damage_t::limit;
        if (m_scanner.is_empty_element())
            return damage_t::none;
        m_open.push_back(m_scanner.name());
        m_open_messages += m_scanner.name() == element_names::msg ? 1 : 0;
        return m_open_messages > limits::max_open_messages ? damage_t::limit : damage_t::none;
    }

    damage_t close()
    {
        if (m_open.back() != m_scanner.name())
            return damage_t::end_tag;
        m_open.pop_back();
        if (m_scanner.name() == element_names::msg) {
            m_messages += m_open.empty() ? 0 : 1;
            --m_open_messages;
        }
        return damage_t::none;
    }

    // A tag that does not fit is at fault from its beginning.
    std::size_t fault_offset(damage_t damage) const
    {
        return position() - (damage == damage_t::markup ? 0 : m_scanner.token().size());
    }

    std::size_t position() const
    {
        return static_cast<std::size_t>(m_scanner.position() - m_text.data());
    }

    std::string_view m_text;
    scanner_t m_scanner;
    std::size_t m_max_open;
    bool m_is_search;
    std::vector<std::string_view> m_open; ///< names
    std::size_t m_open_messages = 0;
    std::size_t m_messages = 0; ///< complete, in the first one
};

// Returns the size of the character at the beginning of a text, 0 when it is malformed or none of
// XML.
std::size_t size_of_character(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    if (' ' <= lead && lead < 0x80)
        return 1;
    const std::size_t size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    const std::string character(text.substr(0, size));
    const std::wstring wide = utf8_to_wide(character);
    return ROVA_2_18::strings::utf16_to_utf8(wide) == character && xml_utf8(wide) == character
               ? size
               : 0;
}

std::size_t find_invalid_character(std::string_view text)
{
    std::size_t at = 0;
    while (at != text.size()) {
        const std::size_t size = size_of_character(text.substr(at));
        if (size == 0)
            break;
        at += size;
    }
    return at;
}

// Returns the end of the comment, instruction or section that the text begins with.
std::string_view end_of_markup(std::string_view text)
{
    static const struct
    {
        std::string_view begin;
        std::string_view end;
    } kinds[] = {{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}};
    for (const auto& kind : kinds)
        if (text.substr(0, kind.begin.size()) == kind.begin)
            return kind.end;
    return std::string_view();
}

// Returns whether the beginning of a message or of an end tag follows the first character.
bool has_tag(std::string_view text)
{
    std::size_t at = text.find('<', 1);
    while (at != std::string_view::npos && text.compare(at, 4, "<msg") != 0 &&
           text.compare(at, 2, "</") != 0)
        at = text.find('<', at + 1);
    return at != std::string_view::npos;
}

bool is_whole(token_t token)
{
    return token != token_t::end && token != token_t::unfinished && token != token_t::malformed;
}

fault_t find_fault_of_token(token_t token, std::string_view bytes)
{
    if (token == token_t::text)
        return find_fault_of_text(bytes);
    if (token != token_t::start_tag)
        return {damage_t::character, find_invalid_character(bytes)};
    // After its own '<' there must be none.
    const fault_t fault = find_fault_of_text(bytes.substr(1));
    return {fault.damage, fault.offset + 1};
}

std::size_t offset_in(std::string_view text, std::string_view part)
{
    return static_cast<std::size_t>(part.data() - text.data());
}

} // namespace

scanned_element_t scan_element(std::string_view text, std::size_t depth, bool is_search)
{
    return element_scan_t(text, depth, is_search).scan();
}

bool hides_message(std::string_view text)
{
    const std::string_view end = end_of_markup(text);
    // The result must not depend on how much of the text has been read.
    if (end.empty() || text.size() < max_hidden_bytes)
        return false;
    // The search goes a little beyond the end or the tag, whichever is first.
    for (std::size_t size = max_hidden_bytes;; size *= 2) {
        const std::string_view part = text.substr(0, size);
        const std::size_t end_at = part.find(end);
        if (end_at != std::string_view::npos)
            return end_at + end.size() > max_hidden_bytes && has_tag(part.substr(0, end_at));
        if (has_tag(part))
            return true;
        if (size >= text.size())
            return false;
    }
}

fault_t find_fault_of_text(std::string_view text)
{
    const std::size_t character = find_invalid_character(text);
    const std::size_t reference = find_fault(text);
    if (character <= reference)
        return {character == text.size() ? damage_t::none : damage_t::character, character};
    return {text[reference] == '&' ? damage_t::reference : damage_t::markup, reference};
}

fault_t find_fault_of_element(std::string_view element)
{
    const markup_t markup = inspect_markup(element, parse_t::tree);
    if (markup.refusal != refusal_t::none)
        return {damage_t::limit, 0};
    const std::string_view well_formed = element.substr(0, markup.well_formed_bytes);
    scanner_t scanner(well_formed);
    for (token_t token = scanner.next(); is_whole(token); token = scanner.next()) {
        scanner.finish_start_tag();
        const std::string_view bytes = scanner.token();
        const fault_t fault = find_fault_of_token(token, bytes);
        if (fault.offset != bytes.size())
            return {fault.damage, offset_in(element, bytes) + fault.offset};
    }
    return {damage_t::markup, well_formed.size() == element.size() ? 0 : well_formed.size()};
}

} // namespace velmoext_1_4_8

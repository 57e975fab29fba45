#include "storage/log_reader_impl.h"

#include "core/message_access.h"
#include "encoding/document_parser.h"
#include "encoding/element_names.h"
#include "encoding/message_recognizer.h"
#include "encoding/stable_lines.h"
#include "storage/element_scan.h"
#include "xml/characters.h"
#include "xml/encodings.h"
#include "xml/limits.h"
#include "xml/well_formed.h"

#include <rova/strings.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

typedef scanner_t::token_t token_t;

const std::string_view byte_order_mark = "\xEF\xBB\xBF";

// Markup that swallows more than this lacks its end, and so does a message that swallows others.
const std::size_t max_unfinished_bytes = limits::max_long_message_bytes;

// A text of this size is passed over in parts.
const std::size_t max_text_bytes = 65536;
const std::size_t max_reference_bytes = 16;
const std::size_t max_trail_bytes = 3; // of a character

// A message in the written form has elements in it, and no others in these.
const std::size_t depth_of_lines = 2;

bool begins_with(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

// Returns whether the text begins with a tag's beginning and the end of its name, or may if it is
// continued.
bool can_begin_with(std::string_view text, std::string_view tag)
{
    const std::size_t size = std::min(text.size(), tag.size());
    return text.substr(0, size) == tag.substr(0, size) &&
           (text.size() <= tag.size() || ends_name(text[tag.size()]));
}

// Returns whether a long message probably lacks its end, so that it has others in it.
bool has_swallowed_messages(const scanned_element_t& scanned, std::string_view element)
{
    return scanned.messages > limits::max_messages_in_long_message ||
           scan_element(element, 0, true).state == scanned_element_t::state_t::malformed;
}

// Requires a whole element "msg". Null when it has a fault.
boost::shared_ptr<message_t> read_element(std::string_view element)
{
    if (element.find('\0') != std::string_view::npos)
        return boost::shared_ptr<message_t>();
    boost::shared_ptr<message_t> message = recognize_document(element);
    return message ? message : parse_document(std::string(element)).message;
}

bool is_trail(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

// Returns the size of a long text without its end, which may be a part of a character, a reference
// or "]]>"; 0 if the text is short.
std::size_t size_without_end(std::string_view text)
{
    if (text.size() < max_text_bytes)
        return 0;
    std::size_t size = text.size() - 2 * max_reference_bytes;
    size = std::min(text.find('&', size), text.size() - max_reference_bytes);
    for (std::size_t i = 0; i != max_trail_bytes && is_trail(text[size]); ++i)
        --size;
    const bool is_in_section_end =
        text.substr(size - 1, 3) == "]]>" || text.substr(size - 2, 3) == "]]>";
    return is_in_section_end ? size - 2 : size;
}

std::string source_of(const message_t& message)
{
    const std::wstring* const source = message_access_t::find_source(message);
    return source ? ROVA_2_18::strings::utf16_to_utf8(*source) : std::string();
}

} // namespace

log_reader_impl_t::log_reader_impl_t(log_reader_t::source_t source, const position_t& position)
    : m_text(std::move(source), position), m_had_root(position.offset != 0), m_begin(position),
      m_end(position)
{
    if (m_had_root)
        m_open.emplace_back(); // any name
}

log_reader_impl_t::result_t log_reader_impl_t::next()
{
    if (m_result == result_t::unreadable)
        return m_result;
    leave_item();
    step_t step = step_t::again;
    while (step != step_t::done) {
        step = m_search == search_t::beginning ? find_beginning() : read_item();
        if (step != step_t::more)
            continue;
        if (m_text.read_more())
            m_is_last = false;
        else
            step = lacks_text();
    }
    return m_result;
}

void log_reader_impl_t::skip_unfinished()
{
    if (m_result != result_t::unfinished || m_element.empty())
        return;
    m_element = std::string_view();
    m_search = search_t::candidate;
    m_is_damaged = true;
    m_is_last = true;
}

boost::shared_ptr<message_t> log_reader_impl_t::message()
{
    if (!m_message && m_result == result_t::message)
        m_message = read_element(m_element);
    return m_message;
}

void log_reader_impl_t::leave_item()
{
    m_text.skip(m_skipped_size, m_skipped_lines);
    m_skipped_size = 0;
    m_skipped_lines = 0;
    m_damage = damage_t::none;
    m_element = m_type = m_source = std::string_view();
    m_severity = message_t::none;
    m_message.reset();
}

log_reader_impl_t::step_t log_reader_impl_t::read_item()
{
    const std::string_view text = m_text.text();
    if (begins_with(text, "\n"))
        return pass(1);
    if (m_text.position().offset == 0 && begins_with(text, byte_order_mark)) {
        m_has_mark = true;
        return pass(byte_order_mark.size());
    }
    const bool can_have_lines =
        !m_open.empty() && m_open.size() + depth_of_lines <= limits::max_element_depth;
    const step_t step = can_have_lines ? read_lines() : step_t::again;
    return step == step_t::again ? read_markup() : step;
}

log_reader_impl_t::step_t log_reader_impl_t::read_lines()
{
    const message_lines_t lines = find_stable_message(m_text.text());
    if (lines.size == 0)
        return step_t::again;
    m_begin = m_text.position();
    ++m_begin.offset; // the indentation
    m_skipped_size = lines.size;
    m_skipped_lines = static_cast<std::int64_t>(lines.count);
    m_element = m_text.text().substr(1, lines.size - 2);
    m_end.offset = m_begin.offset + static_cast<std::int64_t>(m_element.size());
    m_end.line = m_begin.line + m_skipped_lines - 1;
    m_type = lines.type;
    m_source = lines.tool;
    m_severity = lines.severity;
    m_search = search_t::none;
    m_result = result_t::message;
    return step_t::done;
}

log_reader_impl_t::step_t log_reader_impl_t::read_markup()
{
    if (m_is_damaged && hides_message(m_text.text()))
        return refuse(damage_t::markup, 0);
    if ((m_had_root || m_had_document_type) && begins_document_type(m_text.text()))
        return refuse(damage_t::markup, 0);
    scanner_t scanner(m_text.text());
    const token_t token = scanner.next();
    return token == token_t::end || token == token_t::unfinished ? require_end()
                                                                 : read_token(scanner, token);
}

log_reader_impl_t::step_t log_reader_impl_t::require_end()
{
    return m_text.text().size() > max_unfinished_bytes ? refuse(damage_t::markup, 0) : step_t::more;
}

log_reader_impl_t::step_t log_reader_impl_t::read_token(scanner_t& scanner, token_t token)
{
    const std::size_t size = scanner.token().size();
    switch (token) {
    case token_t::text:
        return read_text(scanner.token(), size != m_text.text().size());
    case token_t::start_tag:
        return read_start_tag(scanner);
    case token_t::end_tag:
        return read_end_tag(scanner);
    case token_t::instruction:
        return read_instruction(scanner);
    case token_t::section:
        return m_open.empty() ? refuse(damage_t::markup, 0) : check("<a>", size, "</a>");
    case token_t::document_type:
        return read_document_type(size);
    case token_t::comment:
        return check("<a>", size, "</a>");
    default:
        return refuse(damage_t::markup, size);
    }
}

log_reader_impl_t::step_t log_reader_impl_t::read_text(std::string_view token, bool is_complete)
{
    const bool is_outside = m_open.empty() && (m_had_root || is_complete);
    if (is_outside && !is_blank_text(token))
        return refuse(damage_t::markup, count_blanks(token));
    const std::size_t part = is_complete ? token.size() : size_without_end(token);
    if (part == 0)
        return step_t::more;
    const std::string_view text = token.substr(0, part);
    if (is_blank_text(text))
        return pass(part);
    const fault_t fault = find_fault_of_text(text);
    return fault.offset == part ? check("<a>", part, "</a>") : refuse(fault.damage, fault.offset);
}

log_reader_impl_t::step_t log_reader_impl_t::read_start_tag(scanner_t& scanner)
{
    if (scanner.token().size() == m_text.text().size())
        return require_end(); // the name may go on
    const bool is_message = scanner.name() == element_names::msg;
    if (m_open.empty() && m_had_root)
        return accept_after_root(is_message);
    if (is_message)
        return read_message();
    const token_t token = scanner.finish_start_tag();
    if (token == token_t::unfinished)
        return require_end();
    if (token == token_t::malformed)
        return refuse(damage_t::markup, scanner.token().size());
    if (m_open.size() == limits::max_element_depth)
        return refuse(damage_t::limit, 0);
    const std::string name(scanner.name());
    const bool is_empty = scanner.is_empty_element();
    const std::string end_tag = is_empty ? std::string() : "</" + name + ">";
    const std::size_t size = scanner.token().size();
    const fault_t fault = find_fault_of_markup("", size, end_tag);
    if (fault.damage != damage_t::none)
        return refuse(fault.damage, fault.offset);
    m_had_root = true;
    if (!is_empty)
        m_open.push_back(name);
    return pass(size);
}

log_reader_impl_t::step_t log_reader_impl_t::read_end_tag(const scanner_t& scanner)
{
    if (m_open.empty())
        return refuse(damage_t::markup, 0);
    if (!m_open.back().empty() && m_open.back() != scanner.name())
        return refuse(damage_t::end_tag, 0);
    m_open.pop_back();
    m_search = search_t::none;
    return pass(scanner.token().size());
}

// libxml2 takes an internal subset after the '>' for a part of it.
log_reader_impl_t::step_t log_reader_impl_t::read_document_type(std::size_t size)
{
    if (size == m_text.text().size())
        return require_end();
    const step_t step = check("", size, "<a/>");
    m_had_document_type = true;
    return step;
}

log_reader_impl_t::step_t log_reader_impl_t::read_instruction(const scanner_t& scanner)
{
    if (scanner.name() != "xml")
        return check("<a>", scanner.token().size(), "</a>");
    const std::int64_t offset = m_text.position().offset;
    if (offset != 0 && !(m_has_mark && offset == std::int64_t(byte_order_mark.size())))
        return refuse(damage_t::markup, 0);
    const std::string encoding = declared_encoding(scanner.token());
    return m_is_utf8 || is_utf8(encoding) ? check("", scanner.token().size(), "<a/>")
                                          : convert(encoding);
}

log_reader_impl_t::step_t log_reader_impl_t::read_message()
{
    const std::string_view text = m_text.text();
    const scanned_element_t scanned = scan_element(text, m_open.size(), m_is_damaged);
    const bool is_unfinished = scanned.state == scanned_element_t::state_t::unfinished;
    const std::string_view element = is_unfinished ? text : text.substr(0, scanned.size);
    // The result must not depend on how much of the text has been read.
    if (element.size() > max_unfinished_bytes && has_swallowed_messages(scanned, element))
        return refuse(damage_t::limit, 0);
    if (is_unfinished)
        return step_t::more;
    if (scanned.state == scanned_element_t::state_t::malformed)
        return refuse(scanned.damage, scanned.size);
    m_message = read_element(element);
    // libxml2 may have run out of memory for a moment.
    if (!m_message && is_well_formed(std::string(element)))
        m_message = read_element(element);
    if (!m_message) {
        const fault_t fault = find_fault_of_element(element);
        return refuse(fault.damage, fault.offset);
    }
    m_utf8_type = ROVA_2_18::strings::utf16_to_utf8(message_access_t::type(*m_message));
    m_utf8_source = source_of(*m_message);
    // Nothing throws from here on: a message that was not returned is not passed over.
    m_had_root = true;
    m_begin = m_text.position();
    m_end = m_text.position_of(element.size());
    m_skipped_size = element.size();
    m_skipped_lines = m_end.line - m_begin.line;
    m_element = element;
    m_type = m_utf8_type;
    m_source = m_utf8_source;
    m_severity = m_message->get_severity();
    m_search = search_t::none;
    m_result = result_t::message;
    return step_t::done;
}

// Passes over all text before a "msg", or before the end of the root.
log_reader_impl_t::step_t log_reader_impl_t::find_beginning()
{
    const std::string end_name =
        m_open.front().empty() ? std::string(element_names::log) : m_open.front();
    const std::string tags[] = {std::string("<") + element_names::msg, "</" + end_name};
    const std::string_view text = m_text.text();
    std::size_t at = text.find('<');
    for (; at != std::string_view::npos; at = text.find('<', at + 1)) {
        const std::string_view rest = text.substr(at);
        if (can_begin_with(rest, tags[0]) || can_begin_with(rest, tags[1]))
            break;
    }
    m_text.skip(std::min(at, text.size()));
    const std::size_t needed = std::max(tags[0].size(), tags[1].size()) + 1;
    if (m_text.text().size() < needed && !m_is_last)
        return step_t::more;
    m_search = search_t::candidate;
    return step_t::again;
}

// Passes over markup if it is well-formed with these texts around it.
log_reader_impl_t::step_t log_reader_impl_t::check(std::string_view before, std::size_t size,
                                                   const std::string& after)
{
    const fault_t fault = find_fault_of_markup(before, size, after);
    return fault.damage == damage_t::none ? pass(size) : refuse(fault.damage, fault.offset);
}

fault_t log_reader_impl_t::find_fault_of_markup(std::string_view before, std::size_t size,
                                                const std::string& after) const
{
    std::string document(before);
    document.append(m_text.text().substr(0, size)).append(after);
    if (is_well_formed(document))
        return {damage_t::none, size};
    fault_t fault = find_fault_of_element(document);
    fault.offset = std::min(fault.offset - std::min(fault.offset, before.size()), size);
    return fault;
}

log_reader_impl_t::step_t log_reader_impl_t::pass(std::size_t size)
{
    m_text.skip(size);
    return step_t::again;
}

// The search for the next message begins after the first character of the item. The elements around
// that message are unknown, up to the root.
log_reader_impl_t::step_t log_reader_impl_t::refuse(damage_t damage, std::size_t offset)
{
    const bool is_known = m_search == search_t::candidate;
    if (!is_known) {
        m_damage = damage;
        m_begin = m_end = m_text.position_of(offset);
        m_result = result_t::damage;
    }
    m_open.resize(1);
    m_had_root = true;
    m_is_damaged = true;
    m_search = search_t::beginning;
    m_text.skip(1);
    return is_known ? step_t::again : step_t::done;
}

// The element after the root is damage, and is read by the next call: a message as if it was in the
// root, any other as a further root.
log_reader_impl_t::step_t log_reader_impl_t::accept_after_root(bool is_message)
{
    m_damage = damage_t::markup;
    m_begin = m_end = m_text.position();
    m_result = result_t::damage;
    if (is_message)
        m_open.emplace_back();
    else
        m_had_root = false;
    return step_t::done;
}

log_reader_impl_t::step_t log_reader_impl_t::lacks_text()
{
    const std::size_t blanks = count_blanks(m_text.text());
    if (m_is_last && blanks != m_text.text().size()) {
        m_search = search_t::candidate;
        return refuse(damage_t::markup, 0);
    }
    const bool is_end = m_open.empty() && m_had_root && blanks == m_text.text().size();
    m_begin = m_end = m_text.position_of(blanks);
    m_element = m_text.text().substr(blanks);
    m_result = is_end ? result_t::end : result_t::unfinished;
    return step_t::done;
}

// The text is in memory as a whole then. Without a converter it is read as if it was UTF-8: most
// encodings write markup and Latin letters alike.
log_reader_impl_t::step_t log_reader_impl_t::convert(const std::string& encoding)
{
    while (m_text.text().size() <= limits::max_document_bytes && m_text.read_more()) {
    }
    m_is_utf8 = true;
    const std::string_view text = m_text.text();
    std::string utf8;
    std::size_t unconverted = 0;
    const auto converted =
        text.size() <= limits::max_document_bytes
            ? convert_to_utf8(text, encoding, utf8, std::string::npos, &unconverted)
            : std::nullopt;
    // An encoding that writes the declaration in other bytes is not the log's.
    if (!converted || !begins_with(utf8, "<?xml"))
        return refuse(damage_t::encoding, 0);
    // The text after a byte that the encoding does not have is read as without a converter.
    utf8.append(text.substr(text.size() - unconverted));
    m_text.assign(utf8);
    return step_t::again;
}

} // namespace velmoext_1_4_8

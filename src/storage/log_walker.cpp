#include "storage/log_walker.h"

#include "encoding/element_names.h"
#include "encoding/message_recognizer.h"
#include "encoding/stable_lines.h"
#include "storage/log_sax_reader.h"
#include "xml/characters.h"
#include "xml/cost.h"
#include "xml/encodings.h"
#include "xml/references.h"
#include "xml/scanner.h"

#include <boost/shared_ptr.hpp>

#include <algorithm>
#include <optional>

namespace velmoext_1_4_8
{
namespace
{

typedef scanner_t::token_t token_t;

// Elements that libxml2 has to read are collected up to this size: to create a parser for each
// would cost more than to read it.
const std::size_t max_collected_bytes = 65536;

// Enough for libxml2 to see a fault.
const std::size_t fault_bytes = 512;

// Returns the size up to which a text with a fault is parsed, npos when the text ends before that.
// The event before the fault extends to the next tag. Parsing more can be quadratic in libxml2.
std::size_t size_with_fault(std::string_view text, std::size_t fault)
{
    return text.find('<', fault + fault_bytes);
}

// libxml2 reads ahead by 250 bytes, and asks for more input again and again when there are fewer.
const std::size_t read_ahead = 256;

const std::string_view log_start = "<log>";

std::string make_document(std::string_view start, std::string_view elements)
{
    std::string document(start);
    return document.append(elements).append("</log>").append(read_ahead, '\n');
}

std::size_t size_of(const scanner_t& scanner, std::string_view text)
{
    return static_cast<std::size_t>(scanner.position() - text.data());
}

bool is_unfinished(token_t token)
{
    return token == token_t::unfinished || token == token_t::end;
}

bool has_start_tag(std::string_view text)
{
    scanner_t scanner(text);
    token_t token = scanner.next();
    while (token != token_t::start_tag && token != token_t::malformed && !is_unfinished(token))
        token = scanner.next();
    return token == token_t::start_tag;
}

// The item at the beginning of the text below the root.
struct item_t
{
    enum class kind_t
    {
        complete, ///< an element, or any other content of the root
        unfinished,
        root_end,
        malformed
    };

    kind_t kind;
    std::size_t size; ///< up to its end or fault, 0 when unfinished
};

item_t find_item(std::string_view text)
{
    scanner_t scanner(text);
    std::size_t depth = 0;
    do {
        token_t token = scanner.next();
        if (token == token_t::end_tag && depth == 0)
            return {item_t::kind_t::root_end, 0};
        if (token == token_t::end_tag)
            --depth;
        if (token == token_t::start_tag) {
            token = scanner.finish_start_tag();
            depth += scanner.is_empty_element() ? 0 : 1;
        }
        const std::size_t size = size_of(scanner, text);
        if (is_unfinished(token) || (token == token_t::text && size == text.size()))
            return {item_t::kind_t::unfinished, 0};
        if (token == token_t::malformed || token == token_t::document_type)
            return {item_t::kind_t::malformed, size};
        if (token == token_t::text && find_fault(scanner.token()) != scanner.token().size())
            return {item_t::kind_t::malformed,
                    size - scanner.token().size() + find_fault(scanner.token())};
    } while (depth != 0);
    return {item_t::kind_t::complete, size_of(scanner, text)};
}

// Returns the offset up to which libxml2 parses the text that ends with the item, so that it
// reports the messages before the item. Returns nothing at the root's end, or if more text is
// needed.
std::optional<std::size_t> find_parse_end(std::string_view text, std::size_t begin,
                                          const item_t& item, bool is_last)
{
    if (item.kind == item_t::kind_t::root_end)
        return std::nullopt;
    const std::size_t end = item.kind == item_t::kind_t::malformed
                                ? size_with_fault(text, begin + item.size)
                                : std::string_view::npos;
    if (end == std::string_view::npos && !is_last)
        return std::nullopt;
    return std::min(end, text.size());
}

} // namespace

std::size_t log_walker_t::walk(std::string_view text, bool is_last)
{
    std::size_t walked = 0;
    if (!m_reads_elements && !m_is_whole)
        walked = find_beginning(text, is_last);
    if (m_reads_elements)
        return walked + walk_elements(text.substr(walked), is_last);
    if (m_is_whole && (is_last || text.size() > limits::max_document_bytes))
        parse_whole(text);
    return 0;
}

// Returns its size if the elements after it are read one by one.
std::size_t log_walker_t::find_beginning(std::string_view text, bool is_last)
{
    scanner_t scanner(text);
    token_t token = scanner.next();
    while (token == token_t::instruction || token == token_t::comment ||
           (token == token_t::text && is_blank_text(scanner.token())))
        token = scanner.next();
    const std::string_view name = scanner.name();
    if (token == token_t::start_tag)
        token = scanner.finish_start_tag();
    if (is_unfinished(token) && !is_last)
        return 0;
    const std::string_view beginning = text.substr(0, size_of(scanner, text));
    m_reads_elements = token == token_t::start_tag && name == element_names::log &&
                       !scanner.is_empty_element() && is_utf8(declared_encoding(beginning));
    m_is_whole = !m_reads_elements;
    if (m_is_whole)
        return 0;
    m_is_finished =
        !is_within_limits(beginning) || m_reader.parse(make_document(beginning, "")) != 0;
    return beginning.size();
}

std::size_t log_walker_t::walk_elements(std::string_view text, bool is_last)
{
    std::size_t parsed = 0;
    std::size_t walked = 0;
    bool is_own = false; // whether the text between the two is in the library's written form
    item_t item = {item_t::kind_t::complete, 0};
    while (!m_is_finished && item.kind == item_t::kind_t::complete) {
        walked += count_blanks(text.substr(walked));
        if (const std::string_view lines = find_stable_lines(text, walked); !lines.empty()) {
            parse_elements(text, parsed, walked, is_own);
            on_lines(lines);
            walked += lines.size() - 1;
            parsed = walked;
            continue;
        }
        const std::string_view rest = text.substr(walked);
        const recognized_t recognized = recognize_log_message(rest);
        const bool is_next_own = recognized.size != 0;
        item = is_next_own ? item_t{item_t::kind_t::complete, recognized.size} : find_item(rest);
        if (recognized.message || is_next_own != is_own || item.size >= max_collected_bytes)
            parsed = parse_elements(text, parsed, walked, is_own);
        is_own = is_next_own;
        if (item.kind == item_t::kind_t::complete)
            walked += item.size;
        if (recognized.message) {
            on_message(recognized.message);
            parsed = walked;
        } else if (walked - parsed >= max_collected_bytes) {
            parsed = parse_elements(text, parsed, walked, is_own);
        }
    }
    const auto end = find_parse_end(text, walked, item, is_last);
    if (end)
        parse_rest(text.substr(parsed, *end - parsed));
    else
        parse_elements(text, parsed, walked, is_own);
    m_is_finished = m_is_finished || end || item.kind == item_t::kind_t::root_end;
    return walked;
}

// Returns those that begin with the indentation of this element, if there are any.
std::string_view log_walker_t::find_stable_lines(std::string_view text, std::size_t element) const
{
    if (!m_lines_callback || element == 0)
        return std::string_view();
    const std::string_view rest = text.substr(element - 1);
    return rest.substr(0, measure_stable_lines(rest));
}

void log_walker_t::on_message(const boost::shared_ptr<message_t>& message)
{
    if (!m_is_finished)
        m_reader.take(message);
}

void log_walker_t::on_lines(std::string_view lines) const
{
    if (!m_is_finished)
        m_lines_callback(lines);
}

// Returns the end. A message of the library's own that exceeds a limit costs only itself, whatever
// its size.
std::size_t log_walker_t::parse_elements(std::string_view text, std::size_t begin, std::size_t end,
                                         bool is_own)
{
    const std::string_view elements = text.substr(begin, end - begin);
    if (m_is_finished || is_blank_text(elements))
        return end;
    if (!is_within_limits(elements)) {
        m_is_finished = !is_own;
        return end;
    }
    const auto sizes =
        is_own ? log_sax_reader::sizes_t::unlimited : log_sax_reader::sizes_t::limited;
    m_is_finished = m_reader.parse(make_document(log_start, elements), sizes) != 0;
    return end;
}

// Up to the fault that is in it, or to its end.
void log_walker_t::parse_rest(std::string_view rest)
{
    if (m_is_finished || is_blank_text(rest) || !is_within_limits(rest))
        return;
    m_reader.parse(std::string(log_start).append(rest));
}

void log_walker_t::parse_whole(std::string_view text)
{
    m_is_finished = true;
    if (text.size() > limits::max_document_bytes) {
        m_refusal = refusal_t::document_size;
        return;
    }
    const std::string encoding = declared_encoding(text);
    const bool needs_conversion = !is_utf8(encoding);
    std::string utf8(text);
    if (needs_conversion && !convert_to_utf8(text, encoding, utf8)) {
        m_refusal = refusal_t::encoding;
        return;
    }
    if (!is_within_limits(utf8))
        return;
    const std::size_t fault = inspect_markup(utf8, parse_t::events).well_formed_bytes;
    std::size_t size = text.size();
    if (fault != utf8.size()) {
        // Before the root, what follows can be a document type of any size.
        size = has_start_tag(std::string_view(utf8).substr(0, fault)) ? size_with_fault(utf8, fault)
                                                                      : fault + fault_bytes;
        if (needs_conversion)
            size = convert_to_utf8(text, encoding, utf8, size).value_or(0);
    }
    m_reader.parse(std::string(text.substr(0, size)));
}

bool log_walker_t::is_within_limits(std::string_view markup)
{
    const std::size_t size = log_start.size() + markup.size() + fault_bytes;
    const refusal_t refusal = size > limits::max_document_bytes
                                  ? refusal_t::document_size
                                  : inspect_markup(markup, parse_t::events).refusal;
    if (refusal != refusal_t::none)
        m_refusal = refusal;
    return refusal == refusal_t::none;
}

} // namespace velmoext_1_4_8

#include "storage/log_walker.h"

#include "encoding/element_names.h"
#include "encoding/message_recognizer.h"
#include "storage/log_sax_reader.h"
#include "xml/characters.h"
#include "xml/cost.h"
#include "xml/encodings.h"
#include "xml/references.h"
#include "xml/scanner.h"

#include <boost/shared_ptr.hpp>

#include <algorithm>

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

// libxml2 reads ahead by 250 bytes, and asks for more input again and again when there are fewer.
const std::size_t read_ahead = 256;

std::string make_document(const std::string& beginning, std::string_view elements)
{
    std::string document = beginning;
    return document.append(elements).append("</log>").append(read_ahead, '\n');
}

bool is_utf8(const std::string& encoding)
{
    static const std::string_view name = "UTF-8";
    return encoding.empty() || std::equal(encoding.begin(), encoding.end(), name.begin(),
                                          name.end(), [](char character, char upper) {
                                              return (character & ~0x20) == upper ||
                                                     character == upper;
                                          });
}

std::size_t size_of(const scanner_t& scanner, std::string_view text)
{
    return static_cast<std::size_t>(scanner.position() - text.data());
}

bool is_unfinished(token_t token)
{
    return token == token_t::unfinished || token == token_t::end;
}

// What the text beneath the root begins with.
struct item_t
{
    enum class kind_t
    {
        complete, ///< an element, or anything else that the root can hold
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

} // namespace

std::size_t log_walker_t::walk(std::string_view text, bool is_last)
{
    std::size_t walked = 0;
    if (m_beginning.empty() && !m_is_whole) {
        if (!find_beginning(text, is_last))
            return 0;
        walked = m_beginning.size();
    }
    if (!m_is_whole)
        return walked + walk_elements(text.substr(walked), is_last);
    if (is_last || text.size() > limits::max_document_bytes)
        parse_whole(text);
    return 0;
}

// Returns false when the text ends before that can be told.
bool log_walker_t::find_beginning(std::string_view text, bool is_last)
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
        return false;
    const std::string beginning(text.substr(0, size_of(scanner, text)));
    m_is_whole = token != token_t::start_tag || name != element_names::log ||
                 scanner.is_empty_element() || !is_utf8(declared_encoding(beginning));
    if (m_is_whole)
        return true;
    m_beginning = beginning;
    m_is_finished =
        !is_within_limits(beginning) || m_reader.parse(make_document(beginning, "")) != 0;
    return true;
}

std::size_t log_walker_t::walk_elements(std::string_view text, bool is_last)
{
    std::size_t handed_over = 0;
    std::size_t walked = 0; // what is between the two is for libxml2
    bool is_own = false;    // whether that is in the library's written form
    const auto hand_over = [&] {
        parse_elements(text.substr(handed_over, walked - handed_over), is_own);
        handed_over = walked;
    };
    item_t item = {item_t::kind_t::complete, 0};
    while (!m_is_finished && item.kind == item_t::kind_t::complete) {
        walked += count_blanks(text.substr(walked));
        const std::string_view rest = text.substr(walked);
        const recognized_t recognized = recognize_log_message(rest);
        const bool is_next_own = recognized.size != 0;
        item = is_next_own ? item_t{item_t::kind_t::complete, recognized.size} : find_item(rest);
        if (recognized.message || is_next_own != is_own || item.size >= max_collected_bytes)
            hand_over();
        is_own = is_next_own;
        if (recognized.message && !m_is_finished)
            m_reader.take(recognized.message);
        if (item.kind == item_t::kind_t::complete)
            walked += item.size;
        if (recognized.message)
            handed_over = walked;
        if (walked - handed_over >= max_collected_bytes)
            hand_over();
    }
    const bool is_unfinished = item.kind == item_t::kind_t::unfinished;
    if (item.kind == item_t::kind_t::malformed)
        parse_rest(text.substr(handed_over, walked + item.size + fault_bytes - handed_over));
    else if (is_unfinished && is_last)
        parse_rest(text.substr(handed_over));
    else
        hand_over();
    m_is_finished = m_is_finished || !is_unfinished || is_last;
    return walked;
}

// A message of the library's own that exceeds a limit costs only itself, whatever its size.
void log_walker_t::parse_elements(std::string_view elements, bool is_own)
{
    if (m_is_finished || is_blank_text(elements))
        return;
    if (!is_within_limits(elements)) {
        m_is_finished = !is_own;
        return;
    }
    const std::string document = make_document(m_beginning, elements);
    const auto sizes = is_own ? log_sax_reader::sizes_t::any : log_sax_reader::sizes_t::usual;
    m_is_finished = m_reader.parse(document, sizes) != 0;
}

// Up to the fault that is in it, or to its end.
void log_walker_t::parse_rest(std::string_view rest)
{
    if (m_is_finished || is_blank_text(rest) || !is_within_limits(rest))
        return;
    m_reader.parse(std::string(m_beginning).append(rest));
}

void log_walker_t::parse_whole(std::string_view text)
{
    m_is_finished = true;
    if (text.size() > limits::max_document_bytes) {
        m_refusal = refusal_t::document_size;
        return;
    }
    const std::string encoding = declared_encoding(text);
    std::string utf8(text);
    if (!is_utf8(encoding) && !convert_to_utf8(text, encoding, utf8))
        m_refusal = refusal_t::encoding;
    else if (is_within_limits(utf8))
        m_reader.parse(std::string(text.substr(0, size_to_parse(text, utf8))));
}

// libxml2 can be quadratic in what follows a fault.
std::size_t log_walker_t::size_to_parse(std::string_view text, std::string_view utf8)
{
    const bool is_well_formed =
        look_through_markup(utf8, parse_t::events).well_formed_bytes == utf8.size();
    return is_well_formed
               ? text.size()
               : look_through_markup(text, parse_t::events).well_formed_bytes + fault_bytes;
}

bool log_walker_t::is_within_limits(std::string_view markup)
{
    const std::size_t size = m_beginning.size() + markup.size() + fault_bytes;
    const refusal_t refusal = size > limits::max_document_bytes
                                  ? refusal_t::document_size
                                  : look_through_markup(markup, parse_t::events).refusal;
    if (refusal != refusal_t::none)
        m_refusal = refusal;
    return refusal == refusal_t::none;
}

} // namespace velmoext_1_4_8

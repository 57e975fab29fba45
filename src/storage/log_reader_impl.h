#pragma once

#include "storage/element_scan.h"
#include "storage/log_text.h"
#include "xml/scanner.h"

#include <velmoext1/log_reader.h>
#include <velmoext1/message.h>

#include <boost/shared_ptr.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmoext_1_4_8
{

/// Reads the messages of a log's text.
///
/// A message in the written form of plain text, which nearly all are, is found by its lines. Any
/// other element "msg" is found by its tags and read as a document. After damage, each beginning
/// of an element "msg" is tried.
class log_reader_impl_t
{
public:
    typedef log_reader_t::position_t position_t;
    typedef log_reader_t::result_t result_t;
    typedef log_reader_t::damage_t damage_t;

    log_reader_impl_t(log_reader_t::source_t source, const position_t& position);

    /// Makes each call of next() return result_t::unreadable.
    void set_unreadable() { m_result = result_t::unreadable; }

    result_t next();
    void skip_unfinished();

    position_t begin() const { return m_begin; }
    position_t end() const { return m_end; }
    damage_t damage() const { return m_damage; }
    std::string_view text() const { return m_element; }
    std::string_view type() const { return m_type; }
    std::string_view source() const { return m_source; }
    message_t::severity_t severity() const { return m_severity; }
    boost::shared_ptr<message_t> message();

private:
    /// The outcome of a step.
    enum class step_t
    {
        again, ///< nothing to return
        more,  ///< more text is needed
        done   ///< a result
    };

    /// The state of the search for a message after damage.
    enum class search_t
    {
        none,
        beginning, ///< for the beginning of an element
        candidate  ///< at one, which may be damaged too
    };

    void leave_item();
    step_t read_item();
    step_t read_lines();
    step_t read_markup();
    step_t require_end();
    step_t read_token(scanner_t& scanner, scanner_t::token_t token);
    step_t read_text(std::string_view token, bool is_complete);
    step_t read_start_tag(scanner_t& scanner);
    step_t read_end_tag(const scanner_t& scanner);
    step_t read_document_type(std::size_t size);
    step_t read_instruction(const scanner_t& scanner);
    step_t read_message();
    step_t find_beginning();
    step_t check(std::string_view before, std::size_t size, const std::string& after);
    fault_t find_fault_of_markup(std::string_view before, std::size_t size,
                                 const std::string& after) const;
    step_t pass(std::size_t size);
    step_t accept_after_root(bool is_message);
    step_t refuse(damage_t damage, std::size_t offset);
    step_t lacks_text();
    step_t convert(const std::string& encoding);

    log_text_t m_text;
    std::vector<std::string> m_open; ///< names of the elements around the next message
    bool m_had_document_type = false;
    bool m_had_root;
    bool m_has_mark = false; ///< of the byte order
    bool m_is_utf8 = false;  ///< whatever the log declares
    search_t m_search = search_t::none;
    bool m_is_damaged = false; ///< whether there was damage, or text that was given up
    bool m_is_last = false;    ///< whether no text is expected that would complete a message

    result_t m_result = result_t::unfinished;
    damage_t m_damage = damage_t::none;
    position_t m_begin;
    position_t m_end;
    std::size_t m_skipped_size = 0; ///< with this item
    std::int64_t m_skipped_lines = 0;
    std::string_view m_element;
    std::string_view m_type;
    std::string_view m_source;
    message_t::severity_t m_severity = message_t::none;
    boost::shared_ptr<message_t> m_message;
    std::string m_utf8_type; ///< of a message that was read as a document
    std::string m_utf8_source;
};

} // namespace velmoext_1_4_8

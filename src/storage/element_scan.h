#pragma once

#include <velmoext1/log_reader.h>

#include <cstddef>
#include <string_view>

namespace velmoext_1_4_8
{

/// An element at the beginning of a text.
struct scanned_element_t
{
    enum class state_t
    {
        complete,
        unfinished, ///< the text ends within it
        malformed
    };

    state_t state = state_t::unfinished;
    std::size_t size = 0; ///< up to its end or to the fault; 0 when unfinished
    log_reader_t::damage_t damage = log_reader_t::damage_t::none; ///< none unless it is malformed
    std::size_t messages = 0; ///< elements "msg", complete, below the first one
};

/// Finds the end of an element by its tags, in linear time. Checks neither names nor texts.
///
/// `depth` is the number of elements around it, at most limits::max_element_depth. More than
/// limits::max_open_messages are malformed, so that a search for messages after the beginning of
/// one does not scan the same text again and again. For the same reason, `is_search` has markup
/// that hides a message be malformed.
scanned_element_t scan_element(std::string_view text, std::size_t depth, bool is_search);

/// Returns whether the text begins with a comment, an instruction or a section of some length in
/// which the beginning of a message or an end tag precedes its end.
bool hides_message(std::string_view text);

/// Returns whether the text begins with the beginning of a document type.
inline bool begins_document_type(std::string_view text)
{
    return text.substr(0, 9) == "<!DOCTYPE";
}

/// A fault in a text, or its end.
struct fault_t
{
    log_reader_t::damage_t damage;
    std::size_t offset;
};

/// Returns the first fault that can be found in a complete element that is not read as a message.
fault_t find_fault_of_element(std::string_view element);

/// Returns the first fault in a text between tags. If there is none, its offset is the text's size.
fault_t find_fault_of_text(std::string_view text);

} // namespace velmoext_1_4_8

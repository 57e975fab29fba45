#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmoext_1_4_8
{

/// Splits the text of an element in a log into the events in which libxml2 hands it out, each with
/// the text that log_sax_reader takes from it.
///
/// A run of ASCII counts up to the next tag, whatever follows it. A reference is an event of its
/// own, and so is what begins with another character, up to the next reference.
class text_events_t
{
public:
    explicit text_events_t(std::string_view text);

    /// Returns whether the events are known. libxml2 alone knows those of a text with a carriage
    /// return, with a fault or with more than about 300 bytes that begin with a character beyond
    /// ASCII.
    bool are_known() const { return m_are_known; }

    /// Moves to the next event. Returns false when there is none.
    bool next();

    std::wstring text() const;

private:
    std::string_view m_rest;  ///< after the event
    std::string_view m_event; ///< its text as it is written
    bool m_are_known;
};

} // namespace velmoext_1_4_8

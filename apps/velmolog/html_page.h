#pragma once

#include "entry.h"
#include "presenter.h"
#include "string_table.h"

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace velmolog
{

/// A page of HTML that shows messages, written while they are added. Loads nothing from anywhere.
///
/// Needs memory for the distinct texts of the messages.
class html_page_t
{
public:
    /// Begins a page. The title is shown above the messages. The languages are locales such as
    /// "de_AT"; without any, each message has one text, in no language.
    html_page_t(std::ostream& stream, const std::vector<std::string>& languages,
                const std::string& title);

    /// Selects the language that the page shows first, by its index. It is the first one otherwise.
    void set_first_language(std::size_t index) { m_first_language = index; }

    /// Adds a message, with its texts in each language. Requires as many texts as languages, or one
    /// if there are none.
    void add(const entry_t& entry, const std::vector<texts_t>& texts);

    /// Ends the page. Call it once, after all others. See the stream for failures.
    void finish();

private:
    void append(std::int64_t number);
    void append_text(const std::string& text);
    void append_position(const entry_t& entry);
    std::vector<std::string>
    append_content(const velmoext_1_4_8::message_t::message_content_t& content);
    void write_shapes();
    void write_strings();

    std::ostream& m_stream;
    std::vector<std::string> m_languages;
    std::string m_title;
    std::size_t m_first_language = 0;
    string_table_t m_strings;
    string_table_t m_shapes; ///< as JSON: the names of arguments, elements and attributes
    velmoext_1_4_8::log_reader_t::position_t m_previous = {0, 0};
    std::string m_row; ///< the message that is being added
};

} // namespace velmolog

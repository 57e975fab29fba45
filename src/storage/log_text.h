#pragma once

#include <velmoext1/log_reader.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmoext_1_4_8
{

/// The text of a log that was read from a source but not passed over yet.
class log_text_t
{
public:
    typedef log_reader_t::position_t position_t;
    typedef log_reader_t::source_t source_t;

    log_text_t(source_t source, const position_t& position);

    /// Returns the text from position() on. Valid until read_more() or assign().
    std::string_view text() const;

    /// Reads more text; after a long one, at least as much as there is if the source has it: a long
    /// element is then scanned a few times only. Returns false if the source has none now.
    bool read_more();

    /// Replaces all text that is left, the source's included.
    void assign(const std::string& text);

    /// Passes over the first bytes of the text.
    void skip(std::size_t size);
    /// Does the same with bytes that have this number of line ends.
    void skip(std::size_t size, std::int64_t line_ends);

    position_t position() const { return m_position; }
    /// Returns the position of a byte of the text.
    position_t position_of(std::size_t offset) const;

private:
    source_t m_source;
    position_t m_position; ///< of m_begin
    std::vector<char> m_bytes;
    std::size_t m_begin = 0; ///< of the text, in m_bytes
    std::size_t m_end = 0;
};

} // namespace velmoext_1_4_8

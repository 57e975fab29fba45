#include "po_scan.h"

#include <cstddef>
#include <utility>

namespace velmolint
{
namespace
{

bool is_word(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= '0' && byte <= '9') || byte == '_' ||
           byte == '[' || byte == ']';
}

class po_scanner_t
{
public:
    explicit po_scanner_t(const std::string& text) : m_text(text) {}

    po_scan_t scan();

private:
    bool is_at(char byte) const { return m_next != m_text.size() && m_text[m_next] == byte; }
    position_t position(std::size_t offset) const;
    void copy_to(std::size_t end);
    void scan_line_end();
    void scan_comment();
    void scan_string();
    void scan_word();

    const std::string& m_text;
    std::size_t m_next = 0;
    std::size_t m_line = 1;
    std::size_t m_line_begin = 0;
    bool m_is_obsolete = false; ///< on this line
    po_scan_t m_result;
};

po_scan_t po_scanner_t::scan()
{
    while (m_next != m_text.size()) {
        if (is_at('\n'))
            scan_line_end();
        else if (is_at('#'))
            scan_comment();
        else if (is_at('"'))
            scan_string();
        else if (is_word(m_text[m_next]))
            scan_word();
        else
            copy_to(m_next + 1);
    }
    if (m_result.entries.size() < 2)
        m_result.header_size = m_result.text.size();
    return std::move(m_result);
}

position_t po_scanner_t::position(std::size_t offset) const
{
    return {m_line, offset - m_line_begin + 1};
}

void po_scanner_t::copy_to(std::size_t end)
{
    m_result.text.append(m_text, m_next, end - m_next);
    m_next = end;
}

void po_scanner_t::scan_line_end()
{
    copy_to(m_next + 1);
    ++m_line;
    m_line_begin = m_next;
    m_is_obsolete = false;
}

// Keeps the mark of an obsolete entry: otherwise the flags before it would belong to the next
// entry.
void po_scanner_t::scan_comment()
{
    const char kind = m_next + 1 < m_text.size() ? m_text[m_next + 1] : '\0';
    if (kind == '~') {
        m_is_obsolete = true;
        copy_to(m_next + 2);
        return;
    }
    std::size_t end = m_text.find('\n', m_next);
    if (end == std::string::npos)
        end = m_text.size();
    if (kind == ',' || kind == '=')
        copy_to(end);
    else
        m_next = end;
}

// A string ends with its line at the latest.
void po_scanner_t::scan_string()
{
    std::size_t end = m_next + 1;
    while (end != m_text.size() && m_text[end] != '"' && m_text[end] != '\n') {
        const bool is_escape = m_text[end] == '\\' && end + 1 != m_text.size();
        end += is_escape && m_text[end + 1] != '\n' ? 2 : 1;
    }
    copy_to(end != m_text.size() && m_text[end] == '"' ? end + 1 : end);
}

void po_scanner_t::scan_word()
{
    const std::size_t begin = m_next;
    std::size_t end = begin;
    while (end != m_text.size() && is_word(m_text[end]))
        ++end;
    std::vector<po_scan_t::entry_t>& entries = m_result.entries;
    if (entries.size() == 1)
        m_result.header_size = m_result.text.size();
    copy_to(end);
    if (m_is_obsolete)
        return;
    const std::string word = m_text.substr(begin, end - begin);
    if (word == "msgid")
        entries.push_back({position(begin), {}});
    else if ((word == "msgstr" || word == "msgstr[0]") && !entries.empty())
        entries.back().text = position(begin);
}

} // namespace

po_scan_t scan_po(const std::string& text)
{
    return po_scanner_t(text).scan();
}

} // namespace velmolint

#include "log_scan.h"

#include <array>
#include <cstddef>
#include <utility>

namespace velmolog
{
namespace
{

using velmoext_1_4_8::log_reader_t;

struct fault_words_t
{
    const char* name;
    const char* reason;
};

// In the order of fault_t::kind_t.
const std::array<fault_words_t, 8> fault_words = {{
    {"markup", "malformed markup, or markup that cannot be here"},
    {"end_tag", "an end tag of another element than the last one that began"},
    {"character", "a character that XML does not have, or malformed UTF-8"},
    {"reference", "an ampersand without a reference, or an unknown entity"},
    {"encoding", "an encoding that no converter knows or that is not the log's, read as UTF-8"},
    {"limit", "an element that exceeds a limit of the library"},
    {"truncated", "a text that lacks its end"},
    {"no_end", "the log has no end"},
}};

const fault_words_t& words_of(fault_t::kind_t kind)
{
    return fault_words.at(static_cast<std::size_t>(kind));
}

fault_t::kind_t kind_of(log_reader_t::damage_t damage)
{
    typedef log_reader_t::damage_t damage_t;
    switch (damage) {
    case damage_t::end_tag:
        return fault_t::kind_t::end_tag;
    case damage_t::character:
        return fault_t::kind_t::character;
    case damage_t::reference:
        return fault_t::kind_t::reference;
    case damage_t::encoding:
        return fault_t::kind_t::encoding;
    case damage_t::limit:
        return fault_t::kind_t::limit;
    default:
        return fault_t::kind_t::markup;
    }
}

} // namespace

std::string fault_t::name() const
{
    return words_of(kind).name;
}

std::string fault_t::reason() const
{
    return words_of(kind).reason;
}

log_scan_t::log_scan_t(const std::string& log, diagnostics_t& diagnostics, on_fault_t on_fault)
    : m_log(log), m_input(log, diagnostics),
      m_reader([this](char* bytes, std::size_t size) { return m_input.read(bytes, size); }),
      m_on_fault(std::move(on_fault))
{}

bool log_scan_t::next()
{
    while (!m_is_at_end)
        if (handle(m_reader.next()))
            return true;
    return false;
}

/// Returns whether the reader is at a message.
bool log_scan_t::handle(log_reader_t::result_t result)
{
    typedef log_reader_t::result_t result_t;
    if (result == result_t::unfinished) {
        handle_unfinished();
        return false;
    }
    if (m_unfinished)
        report_unfinished(fault_t::kind_t::truncated);
    if (result == result_t::damage)
        m_on_fault({kind_of(m_reader.get_damage()), m_reader.get_begin()});
    m_is_at_end = result == result_t::end;
    return result == result_t::message;
}

// The text without its end can have whole messages in it. If it has none, the log lacks its end
// only.
void log_scan_t::handle_unfinished()
{
    if (m_unfinished) {
        // A text of another kind has no markup that the reader could refuse.
        report_unfinished(m_input.can_be_xml() ? fault_t::kind_t::no_end : fault_t::kind_t::markup);
        m_is_at_end = true;
        return;
    }
    m_unfinished = {fault_t::kind_t::no_end, m_reader.get_begin(), !m_reader.get_text().empty()};
    m_reader.skip_unfinished();
}

void log_scan_t::report_unfinished(fault_t::kind_t kind)
{
    fault_t fault = *m_unfinished;
    fault.kind = kind;
    m_unfinished.reset();
    m_on_fault(fault);
}

} // namespace velmolog

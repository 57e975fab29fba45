#include "entry_sink.h"

namespace velmolog
{

entry_sink_t::entry_sink_t(const options_t& options, const presenter_t& presenter,
                           std::ostream& output)
    : m_presenter(presenter), m_output(output),
      m_format(make_entry_format(options.format, can_show_colors())), m_first(options.first),
      m_last(options.last)
{}

bool entry_sink_t::add(candidate_t& candidate)
{
    if (m_last)
        keep(candidate);
    else if (!m_first || m_count < *m_first)
        write(candidate);
    return !m_first || m_count < *m_first;
}

void entry_sink_t::finish()
{
    for (entry_t& kept : m_kept) {
        kept.message = message_of_element(kept.element);
        candidate_t candidate(kept, m_presenter);
        write(candidate);
    }
    m_kept.clear();
    m_output << m_format->end(m_count != 0);
}

void entry_sink_t::keep(candidate_t& candidate)
{
    m_kept.push_back({candidate.log(), candidate.begin(), nullptr, candidate.observed(),
                      std::string(candidate.element())});
    if (m_kept.size() > *m_last)
        m_kept.pop_front();
}

void entry_sink_t::write(candidate_t& candidate)
{
    if (m_count++ == 0)
        m_output << m_format->beginning();
    m_output << m_format->text(candidate);
}

} // namespace velmolog

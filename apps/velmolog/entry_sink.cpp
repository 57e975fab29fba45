#include "entry_sink.h"

namespace velmolog
{

entry_sink_t::entry_sink_t(const options_t& options, std::ostream& output)
    : m_output(output), m_format(make_entry_format(options.format, can_show_colors())),
      m_window(options, [this](const std::string& text) { write(text); })
{}

bool entry_sink_t::add(candidate_t& candidate)
{
    return m_window.add(m_format->text(candidate));
}

void entry_sink_t::finish()
{
    m_window.finish();
    m_output << m_format->end(m_has_messages);
}

void entry_sink_t::write(const std::string& text)
{
    if (!m_has_messages)
        m_output << m_format->beginning();
    m_has_messages = true;
    m_output << text;
}

} // namespace velmolog

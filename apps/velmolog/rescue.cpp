#include "candidate.h"
#include "commands.h"
#include "common/escape_controls.h"
#include "diagnostics.h"
#include "entry_format.h"
#include "filter.h"
#include "log_scan.h"
#include "new_file.h"
#include "window.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmolog
{
namespace
{

/// Reports the text that is left out: all between two messages that surround a fault.
class gaps_t
{
public:
    gaps_t(const std::string& log, std::ostream& output)
        : m_log(app_common::escape_controls(log)), m_output(output)
    {}

    void add(const fault_t& fault)
    {
        m_has_damage = m_has_damage || fault.is_damage();
        if (!m_fault)
            m_fault = fault;
    }

    void add_message(const velmoext_1_4_8::log_reader_t& reader)
    {
        if (m_fault)
            report(std::to_string(reader.get_begin().offset - m_end.offset) +
                   " bytes from offset " + std::to_string(m_end.offset));
        m_end = reader.get_end();
    }

    void finish()
    {
        if (m_fault && m_fault->has_text)
            report("everything from offset " + std::to_string(m_end.offset));
    }

    bool has_damage() const { return m_has_damage; }

private:
    void report(const std::string& text)
    {
        m_output << m_log << ":" << m_fault->begin.line << ": " << m_fault->reason()
                 << ", at offset " << m_fault->begin.offset << "; left out " << text << '\n';
        m_fault.reset();
    }

    std::string m_log;
    std::ostream& m_output;
    std::optional<fault_t> m_fault; ///< the first one after the last message
    velmoext_1_4_8::log_reader_t::position_t m_end;
    bool m_has_damage = false;
};

/// Writes the messages that the filters want as a log.
class rescuer_t
{
public:
    rescuer_t(const options_t& options, std::ostream& log)
        : m_filter(options.filter), m_presenter(options.catalogs), m_log(log),
          m_window(options, [this, &log](const std::string& element) {
              log << (m_count++ == 0 ? log_beginning : "") << log_line_of(element);
          })
    {}

    /// Returns whether more messages are wanted.
    bool add(log_scan_t& scan)
    {
        candidate_t candidate(scan.log(), scan.reader(), m_presenter);
        return !m_filter.matches(candidate) || m_window.add(std::string(candidate.element()));
    }

    void finish()
    {
        m_window.finish();
        m_log << (m_count == 0 ? empty_log : log_end);
    }

    std::uint64_t count() const { return m_count; }

private:
    filter_t m_filter;
    presenter_t m_presenter;
    std::ostream& m_log;
    std::uint64_t m_count = 0;
    window_t<std::string> m_window;
};

} // namespace

exit_status_t rescue(const options_t& options, std::ostream& output)
{
    const std::string& log = options.logs.front();
    diagnostics_t diagnostics(true);
    gaps_t gaps(log, output);
    log_scan_t scan(log, diagnostics, [&gaps](const fault_t& fault) { gaps.add(fault); });
    new_file_t file(options.output);
    rescuer_t rescuer(options, file.stream());
    bool is_continued = true;
    while (is_continued && scan.next()) {
        gaps.add_message(scan.reader());
        is_continued = rescuer.add(scan);
    }
    rescuer.finish();
    file.finish();
    gaps.finish();
    output << app_common::escape_controls(options.output) << ": " << rescuer.count()
           << (rescuer.count() == 1 ? " message\n" : " messages\n");
    return gaps.has_damage() ? found : fine;
}

} // namespace velmolog

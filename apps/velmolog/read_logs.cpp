#include "read_logs.h"

#include "fault_report.h"
#include "filter.h"
#include "log_scan.h"

#include <algorithm>

namespace velmolog
{
namespace
{

class logs_reader_t
{
public:
    typedef std::function<bool(candidate_t&)> on_message_t;

    logs_reader_t(const options_t& options, diagnostics_t& diagnostics,
                  const on_message_t& on_message)
        : m_filter(options.filter), m_presenter(options.catalogs), m_diagnostics(diagnostics),
          m_on_message(on_message)
    {}

    /// Returns whether more messages are wanted.
    bool read(const std::string& log)
    {
        fault_report_t report(log, m_diagnostics);
        bool is_continued = true;
        try {
            log_scan_t scan(log, m_diagnostics,
                            [&report](const fault_t& fault) { report.add(fault); });
            while (is_continued && scan.next()) {
                candidate_t candidate(scan.log(), scan.reader(), m_presenter);
                is_continued = !m_filter.matches(candidate) || m_on_message(candidate);
            }
        } catch (const log_error_t& error) {
            m_diagnostics.report(error.what());
            m_status = cannot_run;
        }
        report.finish();
        if (report.has_damage())
            m_status = std::max(m_status, found);
        return is_continued;
    }

    exit_status_t status() const { return m_status; }

private:
    filter_t m_filter;
    presenter_t m_presenter;
    diagnostics_t& m_diagnostics;
    const on_message_t& m_on_message;
    exit_status_t m_status = fine;
};

} // namespace

exit_status_t read_logs(const options_t& options, diagnostics_t& diagnostics,
                        const std::function<bool(candidate_t&)>& on_message)
{
    logs_reader_t reader(options, diagnostics, on_message);
    for (const std::string& log : options.logs)
        if (!reader.read(log))
            break;
    return reader.status();
}

} // namespace velmolog

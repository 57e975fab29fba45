#include "fault_report.h"

namespace velmolog
{
namespace
{

constexpr std::size_t max_reported = 20;

} // namespace

fault_report_t::fault_report_t(const std::string& log, diagnostics_t& diagnostics)
    : m_log(log == "-" ? "standard input" : log), m_diagnostics(diagnostics)
{}

void fault_report_t::add(const fault_t& fault)
{
    if (!fault.is_damage() || ++m_count > max_reported)
        return;
    m_diagnostics.report(m_log + ":" + std::to_string(fault.begin.line) + ": " + fault.reason() +
                         ", at offset " + std::to_string(fault.begin.offset));
}

void fault_report_t::finish()
{
    if (m_count > max_reported)
        m_diagnostics.report(m_log + ": " + std::to_string(m_count - max_reported) +
                             " more faults; velmolog check lists them");
}

} // namespace velmolog

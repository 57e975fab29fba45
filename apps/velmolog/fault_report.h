#pragma once

#include "diagnostics.h"
#include "log_scan.h"

#include <cstddef>
#include <string>

namespace velmolog
{

/// Reports the damage of one log on standard error.
class fault_report_t
{
public:
    fault_report_t(const std::string& log, diagnostics_t& diagnostics);

    void add(const fault_t& fault);
    /// Reports the number of those that were left out.
    void finish();

    bool has_damage() const { return m_count != 0; }

private:
    std::string m_log;
    diagnostics_t& m_diagnostics;
    std::size_t m_count = 0;
};

} // namespace velmolog

#include "finding.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace velmolint
{
namespace
{

constexpr std::size_t max_findings = 10000;

auto sort_key(const finding_t& finding)
{
    const position_t& position = finding.location.position;
    return std::tie(finding.location.file, position.line, position.column, finding.check,
                    finding.message);
}

} // namespace

void findings_t::error(const location_t& location, const std::string& check,
                       const std::string& message)
{
    add({severity_t::error, location, check, message});
}

void findings_t::warning(const location_t& location, const std::string& check,
                         const std::string& message)
{
    add({severity_t::warning, location, check, message});
}

void findings_t::add(finding_t finding)
{
    if (m_findings.size() > max_findings)
        return;
    if (m_findings.size() == max_findings) {
        finding.severity = severity_t::error;
        finding.check = "too-many-findings";
        finding.message = "There are more findings than are shown. Correct these first.";
    }
    m_findings.push_back(std::move(finding));
}

std::vector<finding_t> findings_t::sorted() const
{
    std::vector<finding_t> result = m_findings;
    std::stable_sort(result.begin(), result.end(), [](const auto& left, const auto& right) {
        return sort_key(left) < sort_key(right);
    });
    return result;
}

} // namespace velmolint

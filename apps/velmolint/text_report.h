#pragma once

#include "finding.h"
#include "output_text.h"

#include <string>
#include <utility>

namespace velmolint
{

/// Adds findings about one text, and names it in each: a `.mo` file has no lines.
class text_report_t
{
public:
    text_report_t(findings_t& findings, location_t location, const std::string& id)
        : m_findings(findings), m_location(std::move(location)),
          m_subject("Text " + in_quotes(id) + ": ")
    {}

    void error(const std::string& check, const std::string& message) const
    {
        m_findings.error(m_location, check, m_subject + message);
    }
    void warning(const std::string& check, const std::string& message) const
    {
        m_findings.warning(m_location, check, m_subject + message);
    }

private:
    findings_t& m_findings;
    location_t m_location;
    std::string m_subject;
};

} // namespace velmolint

#include "report.h"

#include "output_text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <ostream>
#include <string>

namespace velmolint
{
namespace
{

typedef nlohmann::ordered_json json_t;

// Changes with the meaning of a field.
constexpr int json_version = 1;

const char language_heading[] = "language";
constexpr int number_width = 12;

std::string name_of(severity_t severity)
{
    return severity == severity_t::error ? "error" : "warning";
}

std::string text_location(const location_t& location)
{
    std::string result = escape_controls(location.file);
    if (location.position.line == 0)
        return result;
    result += ":" + std::to_string(location.position.line);
    if (location.position.column != 0)
        result += ":" + std::to_string(location.position.column);
    return result;
}

void write_row(std::ostream& stream, const std::string& language, std::size_t width,
               const coverage_row_t& row)
{
    stream << std::left << std::setw(static_cast<int>(width)) << language << std::right;
    for (const std::size_t number : {row.translated, row.fuzzy, row.missing, row.total})
        stream << std::setw(number_width) << number;
    stream << '\n';
}

void write_table(std::ostream& stream, const coverage_t& coverage)
{
    std::size_t width = std::string(language_heading).size();
    for (const auto& [language, row] : coverage)
        width = std::max(width, escape_controls(language).size());
    stream << std::left << std::setw(static_cast<int>(width)) << language_heading << std::right;
    for (const char* heading : {"translated", "fuzzy", "missing", "total"})
        stream << std::setw(number_width) << heading;
    stream << '\n';
    for (const auto& [language, row] : coverage)
        write_row(stream, escape_controls(language), width, row);
}

json_t number_or_null(std::size_t number)
{
    return number != 0 ? json_t(number) : json_t();
}

json_t to_json(const finding_t& finding)
{
    return {{"severity", name_of(finding.severity)},
            {"file", finding.location.file},
            {"line", number_or_null(finding.location.position.line)},
            {"column", number_or_null(finding.location.position.column)},
            {"check", finding.check},
            {"message", finding.message}};
}

json_t to_json(const coverage_row_t& row)
{
    return {{"translated", row.translated},
            {"fuzzy", row.fuzzy},
            {"missing", row.missing},
            {"total", row.total}};
}

/// Escapes the value of a parameter of a workflow command, or its message with `extra` empty.
std::string github_escaped(const std::string& text, const std::string& extra)
{
    const std::string special = "%" + extra;
    std::string result;
    for (const char byte : escape_controls(text)) {
        if (special.find(byte) == std::string::npos)
            result += byte;
        else
            result += byte == '%' ? "%25" : byte == ':' ? "%3A" : "%2C";
    }
    return result;
}

std::string github_parameter(const std::string& text)
{
    return github_escaped(text, ":,");
}

} // namespace

void write_text(std::ostream& stream, const result_t& result)
{
    const auto findings = result.findings.sorted();
    for (const finding_t& finding : findings)
        stream << text_location(finding.location) << ": " << name_of(finding.severity) << ": "
               << escape_controls(finding.message) << " [" << finding.check << "]\n";
    if (!findings.empty() && !result.coverage.empty())
        stream << '\n';
    if (!result.coverage.empty())
        write_table(stream, result.coverage);
}

void write_json(std::ostream& stream, const result_t& result)
{
    json_t findings = json_t::array();
    for (const finding_t& finding : result.findings.sorted())
        findings.push_back(to_json(finding));
    json_t coverage = json_t::object();
    for (const auto& [language, row] : result.coverage)
        coverage[language] = to_json(row);
    const json_t document = {
        {"version", json_version}, {"findings", findings}, {"coverage", coverage}};
    // File names need not be UTF-8.
    stream << document.dump(2, ' ', true, json_t::error_handler_t::replace) << '\n';
}

void write_github(std::ostream& stream, const result_t& result)
{
    for (const finding_t& finding : result.findings.sorted()) {
        const position_t& position = finding.location.position;
        stream << "::" << name_of(finding.severity)
               << " file=" << github_parameter(finding.location.file);
        if (position.line != 0)
            stream << ",line=" << position.line;
        if (position.column != 0)
            stream << ",col=" << position.column;
        stream << ",title=" << github_parameter(finding.check)
               << "::" << github_escaped(finding.message, std::string()) << '\n';
    }
}

} // namespace velmolint

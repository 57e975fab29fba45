#include "commands.h"
#include "common/escape_controls.h"
#include "diagnostics.h"
#include "filter.h"
#include "json_text.h"
#include "log_scan.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace velmolog
{
namespace
{

constexpr std::size_t max_listed_faults = 1000;

struct listed_fault_t
{
    fault_t fault;
    std::uint64_t messages_before;
};

/// The state of one log.
struct result_t
{
    std::string log;
    std::uint64_t messages = 0;
    std::vector<listed_fault_t> faults;
    std::uint64_t unlisted_faults = 0;
    bool has_damage = false;

    void add(const fault_t& fault)
    {
        has_damage = has_damage || fault.is_damage();
        if (faults.size() != max_listed_faults)
            faults.push_back({fault, messages});
        else
            ++unlisted_faults;
    }

    std::string state() const
    {
        return has_damage ? "damaged" : faults.empty() ? "whole" : "truncated";
    }
};

/// Counts the messages that the filters want.
class checker_t
{
public:
    explicit checker_t(const options_t& options)
        : m_filter(options.filter), m_presenter(options.catalogs), m_diagnostics(true)
    {}

    /// Throws log_error_t.
    result_t check(const std::string& log)
    {
        result_t result;
        result.log = log;
        log_scan_t scan(log, m_diagnostics, [&result](const fault_t& fault) { result.add(fault); });
        while (scan.next()) {
            candidate_t candidate(scan.log(), scan.reader(), m_presenter);
            if (m_filter.matches(candidate))
                ++result.messages;
        }
        return result;
    }

    void report(const std::string& text) { m_diagnostics.report(text); }

private:
    filter_t m_filter;
    presenter_t m_presenter;
    diagnostics_t m_diagnostics;
};

std::string messages_text(std::uint64_t count)
{
    return std::to_string(count) + (count == 1 ? " message" : " messages");
}

void write_lines(std::ostream& output, const result_t& result)
{
    const std::string log = app_common::escape_controls(result.log);
    output << log << ": " << result.state() << ", " << messages_text(result.messages) << '\n';
    for (const auto& [fault, before] : result.faults)
        output << log << ":" << fault.begin.line << ": " << fault.reason() << ", at offset "
               << fault.begin.offset << ", " << messages_text(before) << " before and "
               << result.messages - before << " after\n";
    if (result.unlisted_faults != 0)
        output << log << ": " << result.unlisted_faults << " more faults\n";
}

json_t json_of(const result_t& result)
{
    json_t faults = json_t::array();
    for (const auto& [fault, before] : result.faults)
        faults.push_back({{"offset", fault.begin.offset},
                          {"line", fault.begin.line},
                          {"fault", fault.name()},
                          {"reason", fault.reason()},
                          {"messages_before", before},
                          {"messages_after", result.messages - before}});
    return {{"log", result.log},
            {"state", result.state()},
            {"messages", result.messages},
            {"faults", faults},
            {"more_faults", result.unlisted_faults}};
}

} // namespace

exit_status_t check(const options_t& options, std::ostream& output)
{
    checker_t checker(options);
    exit_status_t status = fine;
    for (const std::string& log : options.logs) {
        try {
            const result_t result = checker.check(log);
            if (options.format == format_t::json)
                output << text_of(json_of(result)) << '\n';
            else
                write_lines(output, result);
            if (!result.faults.empty())
                status = std::max(status, found);
        } catch (const log_error_t& error) {
            checker.report(error.what());
            status = cannot_run;
        }
    }
    return status;
}

} // namespace velmolog

#include "stats_report.h"

#include "common/escape_controls.h"
#include "json_text.h"

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <sstream>
#include <string>

namespace velmolog
{
namespace
{

using velmoext_1_4_8::message_t;

constexpr int indentation = 2;
constexpr std::uint64_t bar_width = 30;
const char bar_part[] = "\u2588";

/// The rows of a table.
typedef std::vector<name_counter_t::count_t> rows_t;

/// Returns the bar with the blanks after it.
std::string bar(std::uint64_t count, std::uint64_t largest)
{
    // Any message is worth a part of a bar.
    const std::uint64_t parts = std::max<std::uint64_t>(
        static_cast<std::uint64_t>(static_cast<double>(count) / static_cast<double>(largest) *
                                   static_cast<double>(bar_width)),
        1);
    std::string text;
    for (std::uint64_t i = 0; i != bar_width; ++i)
        text += i < parts ? bar_part : " ";
    return text;
}

void write_table(std::ostream& output, const char* heading, const rows_t& rows, bool has_bars)
{
    std::uint64_t largest = 1;
    for (const auto& [name, count] : rows)
        largest = std::max(largest, count);
    const int width = static_cast<int>(std::to_string(largest).size());
    output << '\n' << heading << '\n';
    for (const auto& [name, count] : rows) {
        output << "  " << std::setw(width) << count << "  ";
        if (has_bars)
            output << bar(count, largest) << "  ";
        output << name << '\n';
    }
}

rows_t rows_of(const stats_t& stats)
{
    rows_t rows;
    for (std::size_t i = stats.severities.size(); i-- != 0;)
        if (stats.severities.at(i) != 0)
            rows.emplace_back(name_of(static_cast<message_t::severity_t>(i)),
                              stats.severities.at(i));
    return rows;
}

rows_t rows_of(const name_counter_t& names)
{
    rows_t rows = names.sorted();
    for (auto& [name, count] : rows)
        name = name.empty() ? "(empty)" : app_common::escape_controls(name);
    if (names.others() != 0)
        rows.emplace_back("(others: only the first " + std::to_string(names.sorted().size()) +
                              " different ones are counted separately)",
                          names.others());
    return rows;
}

json_t json_of(const name_counter_t& names)
{
    json_t::object_t object;
    for (const auto& [name, count] : names.sorted())
        object.emplace_back(name, count);
    return object;
}

} // namespace

void stats_t::add(message_t::severity_t severity, std::string_view source, std::string_view type)
{
    ++messages;
    ++severities.at(static_cast<std::size_t>(severity));
    sources.add(source);
    types.add(type);
}

void write_tables(std::ostream& output, const stats_t& stats, bool has_bars)
{
    output << stats.messages << (stats.messages == 1 ? " message\n" : " messages\n");
    if (stats.messages == 0)
        return;
    write_table(output, "Severity", rows_of(stats), has_bars);
    write_table(output, "Source", rows_of(stats.sources), has_bars);
    write_table(output, "Type", rows_of(stats.types), has_bars);
}

void write_json(std::ostream& output, const stats_t& stats)
{
    json_t severities = json_t::object();
    for (std::size_t i = 0; i != stats.severities.size(); ++i)
        severities[name_of(static_cast<message_t::severity_t>(i))] = stats.severities.at(i);
    const json_t object = {
        {"messages", stats.messages},        {"severities", severities},
        {"sources", json_of(stats.sources)}, {"other_sources", stats.sources.others()},
        {"types", json_of(stats.types)},     {"other_types", stats.types.others()}};
    output << text_of(object, indentation) << '\n';
}

} // namespace velmolog

#include "command_options.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace velmolog
{
namespace
{

using velmoext_1_4_8::message_t;

const std::map<std::string, message_t::severity_t> severities = {{"none", message_t::none},
                                                                 {"info", message_t::info},
                                                                 {"warning", message_t::warning},
                                                                 {"error", message_t::error},
                                                                 {"critical", message_t::critical}};

const std::map<std::string, format_t> formats = {
    {"line", format_t::line}, {"json", format_t::json}, {"xml", format_t::xml}};

/// Adds an option that can be repeated, and takes one value each time.
template <typename Value>
CLI::Option* add_list(CLI::App& app, const std::string& name, std::vector<Value>& values,
                      const std::string& help, const std::string& type)
{
    return app.add_option(name, values, help)
        ->allow_extra_args(false)
        ->type_name(type)
        ->group("Filters");
}

template <typename Value>
std::vector<std::string> names_of(const std::map<std::string, Value>& values)
{
    std::vector<std::string> names(values.size());
    std::transform(values.begin(), values.end(), names.begin(),
                   [](const auto& value) { return value.first; });
    return names;
}

void add_severity(CLI::App& app, const std::string& name, conditions_t& conditions,
                  const std::string& help)
{
    const auto add = [&conditions](const std::vector<std::string>& names) {
        std::transform(names.begin(), names.end(), std::back_inserter(conditions.severities),
                       [](const std::string& severity) { return severities.at(severity); });
    };
    app.add_option_function<std::vector<std::string>>(name, add, help)
        ->allow_extra_args(false)
        ->type_name("LEVEL")
        ->group("Filters")
        ->check(CLI::IsMember(names_of(severities)));
}

void add_conditions(CLI::App& app, const std::string& dashes, conditions_t& conditions,
                    const std::string& begin)
{
    add_severity(app, dashes + "severity", conditions, begin + "of this severity or a higher one");
    add_list(app, dashes + "type", conditions.types, begin + "of this type", "GLOB");
    add_list(app, dashes + "source", conditions.sources, begin + "of this source", "GLOB");
    add_list(app, dashes + "arg", conditions.arguments, begin + "with this argument",
             "NAME[=GLOB]");
    add_list(app, dashes + "text", conditions.texts, begin + "with this text", "GLOB");
}

void add_filters(CLI::App& app, filter_options_t& filter)
{
    add_conditions(app, "--", filter.wanted, "Only messages ");
    add_conditions(app, "--not-", filter.unwanted, "No messages ");
}

std::string check_number(const std::string& text)
{
    const bool is_number =
        !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    return is_number ? std::string() : "\"" + text + "\" is not a number of messages";
}

void add_limit(CLI::App& app, const std::string& name, std::optional<std::size_t>& limit,
               const std::string& help)
{
    const auto set = [&limit](const std::string& digits) {
        std::size_t number = 0;
        const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        // No log has so many messages.
        limit = result.ec == std::errc() ? number : std::numeric_limits<std::size_t>::max();
    };
    app.add_option_function<std::string>(name, set, help)
        ->type_name("N")
        ->group("Filters")
        ->check(check_number);
}

void add_limits(CLI::App& app, options_t& options)
{
    add_limit(app, "--first", options.first, "Only the first N of these messages");
    add_limit(app, "--last", options.last, "Only the last N of these messages");
}

void add_catalogs(CLI::App& app, catalog_options_t& catalogs)
{
    const auto add = [&app](const char* name, std::string& value, const char* help,
                            const char* type) {
        app.add_option(name, value, help)->type_name(type)->group("Texts");
    };
    add("--locale-dir", catalogs.locale_directory,
        "Directory of the message catalogs: LANGUAGE/LC_MESSAGES/SOURCE.mo", "DIR");
    add("--config-dir", catalogs.config_directory, "Directory of the configuration files", "DIR");
    add("--prefix", catalogs.prefix, "Prefer the catalogs with this prefix", "P");
    add("--lang", catalogs.language, "Language of the texts, such as de_AT", "LOCALE");
}

void add_format(CLI::App& app, options_t& options, const std::vector<std::string>& names)
{
    app.add_option_function<std::string>(
           "--format", [&options](const std::string& name) { options.format = formats.at(name); },
           "The form of the output")
        ->type_name("FORMAT")
        ->check(CLI::IsMember(names));
}

void add_output(CLI::App& app, options_t& options, const char* help)
{
    app.add_option("-o,--output", options.output, help)->required()->type_name("FILE");
}

} // namespace

void add_options(CLI::App& app, command_t command, options_t& options)
{
    app.set_help_flag("--help", "Print this text");
    add_filters(app, options.filter);
    if (command != command_t::check)
        add_limits(app, options);
    add_catalogs(app, options.catalogs);
    switch (command) {
    case command_t::show:
        app.add_flag("--follow", options.is_followed, "Show what is appended, too");
        app.add_flag("--observed", options.is_observed, "Add the time of reading to JSON");
        return add_format(app, options, {"line", "json", "xml"});
    case command_t::stats:
    case command_t::check:
    case command_t::diff:
        return add_format(app, options, {"line", "json"});
    case command_t::rescue:
        return add_output(app, options, "The new log, which must not exist");
    case command_t::html:
        return add_output(app, options, "The page, which must not exist");
    }
}

} // namespace velmolog

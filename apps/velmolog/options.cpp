#include "options.h"

#include <velmoext1/version.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <iostream>
#include <iterator>
#include <map>
#include <string_view>

namespace velmolog
{
namespace
{

using velmoext_1_4_8::message_t;

const char description[] = "Reads the logs of messages that velmoext1 records.";
const char footer[] =
    "Without a command, velmolog shows the logs. LOG is a file or a pipe, - standard input.\n"
    "velmolog COMMAND --help lists the options of a command.\n"
    "Exit status: 0 fine, 1 a log is damaged, or there are findings or differences, 2 the program\n"
    "cannot run. The manual page velmolog(1) explains the commands.";

struct command_name_t
{
    command_t command;
    const char* name;
    const char* description;
};

const std::array<command_name_t, 6> commands = {{
    {command_t::show, "show", "Show the messages"},
    {command_t::stats, "stats", "Count the messages by severity, source and type"},
    {command_t::check, "check", "Report whether the logs are whole, truncated or damaged"},
    {command_t::rescue, "rescue", "Write every complete message of a log to a new log"},
    {command_t::diff, "diff", "Show the messages that only one of two logs has"},
    {command_t::html, "html", "Write a page with a table of the messages"},
}};

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
    const bool is_number = text.find_first_not_of("0123456789") == std::string::npos;
    return is_number ? std::string() : "\"" + text + "\" is not a number of messages";
}

void add_limits(CLI::App& app, options_t& options)
{
    CLI::Option* const first =
        app.add_option("--first", options.first, "Only the first N of these messages");
    CLI::Option* const last =
        app.add_option("--last", options.last, "Only the last N of these messages");
    for (CLI::Option* const option : {first, last})
        option->type_name("N")->group("Filters")->check(check_number);
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

void add_logs(CLI::App& app, options_t& options)
{
    app.add_option("LOG", options.logs, "Paths of logs, or - for standard input")
        ->required()
        ->type_name("");
}

void add_log(CLI::App& app, options_t& options, const char* name)
{
    app.add_option_function<std::string>(
           name, [&options](const std::string& log) { options.logs.push_back(log); },
           "Path of a log, or - for standard input")
        ->required()
        ->type_name("");
}

void add_output(CLI::App& app, options_t& options, const char* help)
{
    app.add_option("-o,--output", options.output, help)->required()->type_name("FILE");
}

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
        add_format(app, options, {"line", "json", "xml"});
        return add_logs(app, options);
    case command_t::stats:
    case command_t::check:
        add_format(app, options, {"line", "json"});
        return add_logs(app, options);
    case command_t::rescue:
        add_output(app, options, "The new log, which must not exist");
        return add_log(app, options, "LOG");
    case command_t::diff:
        add_format(app, options, {"line", "json"});
        add_log(app, options, "A");
        return add_log(app, options, "B");
    case command_t::html:
        add_output(app, options, "The page, which must not exist");
        return add_logs(app, options);
    }
}

bool is_command(std::string_view word)
{
    return std::any_of(commands.begin(), commands.end(),
                       [word](const command_name_t& command) { return word == command.name; });
}

/// Returns the arguments after the name of the program, with the command that is meant.
std::vector<std::string> completed(int count, char** arguments)
{
    std::vector<std::string> words(arguments + std::min(count, 1), arguments + count);
    const bool has_command =
        words.empty() || is_command(words[0]) || words[0] == "--help" || words[0] == "--version";
    if (!has_command)
        words.insert(words.begin(), "show");
    return words;
}

void check_catalogs(const catalog_options_t& catalogs)
{
    const bool has_option = !catalogs.config_directory.empty() || !catalogs.prefix.empty() ||
                            !catalogs.language.empty();
    if (has_option && catalogs.locale_directory.empty())
        throw usage_error_t("--config-dir, --prefix and --lang require --locale-dir");
}

void check(const options_t& options)
{
    if (std::count(options.logs.begin(), options.logs.end(), "-") > 1)
        throw usage_error_t("standard input can be read only once");
    if (options.first && options.last)
        throw usage_error_t("--first excludes --last");
    if (options.is_followed && std::count(options.logs.begin(), options.logs.end(), "-") != 0)
        throw usage_error_t("--follow cannot read standard input");
    if (options.is_followed && (options.first || options.last))
        throw usage_error_t("--follow excludes --first and --last");
    check_catalogs(options.catalogs);
}

} // namespace

std::optional<options_t> read_options(int count, char** arguments)
{
    options_t options;
    CLI::App app(description, "velmolog");
    app.set_help_flag("--help", "Print this text");
    app.set_version_flag("--version", "velmolog " VELMOEXT1_VERSION, "Print the version");
    app.footer(footer);
    app.require_subcommand(1);
    for (const command_name_t& command : commands) {
        CLI::App* const subcommand = app.add_subcommand(command.name, command.description);
        add_options(*subcommand, command.command, options);
        subcommand->final_callback([&options, &command]() { options.command = command.command; });
    }
    if (count < 2)
        throw usage_error_t("a log is missing; velmolog --help lists the commands");
    std::vector<std::string> words = completed(count, arguments);
    const std::string help = words.front() + " --help";
    std::reverse(words.begin(), words.end()); // as CLI11 takes them
    try {
        app.parse(words);
    } catch (const CLI::Success& help_or_version) {
        app.exit(help_or_version);
        if (!std::cout.flush())
            throw usage_error_t("standard output cannot be written");
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw usage_error_t(std::string(error.what()) + "; velmolog " + help +
                            " lists the options");
    }
    check(options);
    return options;
}

} // namespace velmolog

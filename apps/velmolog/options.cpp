#include "options.h"

#include "command_options.h"

#include <velmoext1/version.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>
#include <string_view>

namespace velmolog
{
namespace
{

const char description[] = "Reads the logs of messages that velmoext1 records.";
const char footer[] =
    "Without a command, velmolog shows the logs.\n"
    "LOG is a file or a pipe, - standard input. After --, all words are logs.\n"
    "velmolog COMMAND --help lists the options of a command.\n"
    "Exit status: 0 fine, 1 a log is damaged, or there are differences, or check\n"
    "has found a log without its end, 2 the program cannot run.\n"
    "The manual page velmolog(1) explains the commands.";

struct command_name_t
{
    command_t command;
    const char* name;
    const char* description;
    std::array<const char*, 2> logs; ///< that it requires; the second one can be null
    bool has_more_logs;
};

const std::array<command_name_t, 6> commands = {{
    {command_t::show, "show", "Show the messages", {"LOG", nullptr}, true},
    {command_t::stats,
     "stats",
     "Count the messages by severity, source and type",
     {"LOG", nullptr},
     true},
    {command_t::check,
     "check",
     "Report whether the logs are whole, truncated or damaged",
     {"LOG", nullptr},
     true},
    {command_t::rescue,
     "rescue",
     "Write every complete message of a log to a new log",
     {"LOG", nullptr},
     false},
    {command_t::diff, "diff", "Show the messages that only one of two logs has", {"A", "B"}, false},
    {command_t::html, "html", "Write a page with a table of the messages", {"LOG", nullptr}, true},
}};

const command_name_t* find_command(std::string_view name)
{
    const auto* const found =
        std::find_if(commands.begin(), commands.end(),
                     [name](const command_name_t& command) { return name == command.name; });
    return found == commands.end() ? nullptr : found;
}

/// Writes the usage, with the names of the logs.
class formatter_t : public CLI::Formatter
{
public:
    std::string make_usage(const CLI::App* app, std::string name) const override
    {
        const command_name_t* const command = find_command(app->get_name());
        if (!command)
            return "Usage: " + name + " [COMMAND] [OPTIONS] LOG...\n";
        std::string usage = "Usage: " + name + " [OPTIONS] " + command->logs[0];
        if (command->logs[1])
            usage.append(" ").append(command->logs[1]);
        return usage + (command->has_more_logs ? "...\n" : "\n");
    }
};

/// The arguments after the name of the program.
struct words_t
{
    std::vector<std::string> words; ///< the command, its options, and logs
    std::vector<std::string> logs;  ///< after "--"
};

/// Returns the words with the command that is meant.
words_t complete(int count, char** arguments)
{
    char** const end = arguments + count;
    char** const dashes = std::find(arguments + 1, end, std::string_view("--"));
    words_t result;
    for (char** argument = arguments + 1; argument != dashes; ++argument) {
        const std::string word = *argument;
        // CLI11 would take the next word for the value.
        const bool has_empty_value = word.substr(0, 2) == "--" && word.find('=') == word.size() - 1;
        result.words.push_back(word.substr(0, word.size() - (has_empty_value ? 1 : 0)));
        if (has_empty_value)
            result.words.emplace_back();
    }
    if (dashes != end)
        result.logs.assign(dashes + 1, end);
    const std::string first = result.words.empty() ? std::string() : result.words.front();
    if (!find_command(first) && first != "--help" && first != "--version")
        result.words.insert(result.words.begin(), "show");
    return result;
}

/// Takes the words that are not options for logs. As an option of CLI11, logs would have the
/// brackets of "[a]" removed.
void take_logs(const std::vector<std::string>& words, const std::vector<std::string>& more,
               options_t& options)
{
    const auto is_option = [](const std::string& word) {
        return word.size() > 1 && word.front() == '-';
    };
    const auto option = std::find_if(words.begin(), words.end(), is_option);
    if (option != words.end())
        throw CLI::ExtrasError({*option});
    options.logs = words;
    options.logs.insert(options.logs.end(), more.begin(), more.end());
    if (std::count(options.logs.begin(), options.logs.end(), "") != 0)
        throw usage_error_t("the name of a log is empty");
}

void check_logs(const command_name_t& command, const std::vector<std::string>& logs)
{
    std::size_t required = 0;
    for (const char* const name : command.logs) {
        if (name && logs.size() == required)
            throw CLI::RequiredError(name);
        required += name ? 1 : 0;
    }
    if (logs.size() > required && !command.has_more_logs)
        throw CLI::ExtrasError({logs[required]});
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
    if (count < 2)
        throw usage_error_t("a log is missing; velmolog --help lists the commands");
    options_t options;
    CLI::App app(description, "velmolog");
    app.set_help_flag("--help", "Print this text");
    app.set_version_flag("--version", "velmolog " VELMOEXT1_VERSION, "Print the version");
    app.footer(footer);
    app.formatter(std::make_shared<formatter_t>());
    app.require_subcommand(1);
    words_t given = complete(count, arguments);
    for (const command_name_t& command : commands) {
        CLI::App* const subcommand = app.add_subcommand(command.name, command.description);
        add_options(*subcommand, command.command, options);
        subcommand->allow_extras();
        subcommand->final_callback([&options, &given, &command, subcommand]() {
            options.command = command.command;
            take_logs(subcommand->remaining(), given.logs, options);
            check_logs(command, options.logs);
        });
    }
    const std::string help = given.words.front() + " --help";
    std::reverse(given.words.begin(), given.words.end()); // as CLI11 takes them
    try {
        app.parse(given.words);
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

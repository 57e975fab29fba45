#include "file_search.h"
#include "lint.h"
#include "output_text.h"
#include "report.h"

#include <velmoext1/version.h>

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <string>

namespace
{

using velmolint::result_t;

enum exit_status_t
{
    clean = 0,
    found = 1,
    cannot_run = 2
};

const char description[] =
    "Checks configuration files of message types and their message catalogs.";
const char footer[] = "Exit status: 0 nothing found, 1 findings, 2 the program cannot run.\n"
                      "The manual page velmolint(1) explains each check.";

void add_options(CLI::App& app, velmolint::selection_t& selection, std::string& format)
{
    app.footer(footer);
    app.add_option("--source", selection.source, "Check only this source")->type_name("NAME");
    app.add_option("--prefix", selection.prefix,
                   "Check only catalogs that a receiver with this prefix uses: those with the "
                   "prefix, and those without one")
        ->type_name("P");
    app.add_option("--format", format, "Output: text, json or github")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json", "github"}));
    app.set_version_flag("--version", "velmolint " VELMOEXT1_VERSION, "Print the version");
    app.add_option("CONFIG_DIR", selection.config_directory, "Directory of the configuration files")
        ->required()
        ->type_name("");
    app.add_option("PO_OR_LOCALE_DIR", selection.catalogs,
                   ".po or .mo files, or directories of them")
        ->required()
        ->type_name("");
}

void write(const result_t& result, const std::string& format)
{
    if (format == "json")
        write_json(std::cout, result);
    else if (format == "github")
        write_github(std::cout, result);
    else
        write_text(std::cout, result);
    std::cout.flush();
    if (!std::cout)
        throw velmolint::usage_error_t("standard output cannot be written");
}

int run(int count, char** arguments)
{
    CLI::App app(description, "velmolint");
    app.set_help_flag("--help", "Print this text");
    velmolint::selection_t selection;
    std::string format = "text";
    add_options(app, selection, format);
    try {
        app.parse(count, arguments);
    } catch (const CLI::Success& help_or_version) {
        return app.exit(help_or_version);
    } catch (const CLI::ParseError& error) {
        throw velmolint::usage_error_t(std::string(error.what()) +
                                       "; velmolint --help lists the options");
    }
    const result_t result = velmolint::lint(selection);
    write(result, format);
    return result.findings.is_empty() ? clean : found;
}

} // namespace

int main(int count, char** arguments)
{
    try {
        return run(count, arguments);
    } catch (const std::exception& error) {
        std::cerr << "velmolint: " << velmolint::escape_controls(error.what()) << '\n';
        return cannot_run;
    }
}

#pragma once

#include <velmoext1/message.h>

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmolog
{

/// The program cannot run: a wrong option, or a file that cannot be used.
class usage_error_t : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

enum class command_t
{
    show,
    stats,
    check,
    rescue,
    diff,
    html
};

enum class format_t
{
    line,
    json,
    xml
};

/// The exit status of the program; a larger one counts more.
enum exit_status_t
{
    fine = 0,
    found = 1, ///< a log is damaged, or there are findings or differences
    cannot_run = 2
};

/// Conditions on messages, as the options give them. A list that is empty has no effect.
struct conditions_t
{
    std::vector<velmoext_1_4_8::message_t::severity_t> severities; ///< at least one of them
    std::vector<std::string> types;                                ///< globs
    std::vector<std::string> sources;                              ///< globs
    std::vector<std::string> arguments;                            ///< NAME or NAME=GLOB
    std::vector<std::string> texts;                                ///< globs, or parts of the text
};

struct filter_options_t
{
    conditions_t wanted;   ///< a message meets one of each list
    conditions_t unwanted; ///< a message meets none
};

/// The message catalogs and their configuration; without a locale directory there are none.
struct catalog_options_t
{
    std::string locale_directory;
    std::string config_directory;
    std::string prefix;
    std::string language; ///< empty: that of the environment
};

struct options_t
{
    command_t command = command_t::show;
    std::vector<std::string> logs; ///< paths, or "-" for standard input
    filter_options_t filter;
    std::optional<std::size_t> first; ///< only so many messages, the first ones
    std::optional<std::size_t> last;
    format_t format = format_t::line;
    bool is_followed = false;
    bool is_observed = false; ///< whether JSON has the time of reading; always if it is followed
    catalog_options_t catalogs;
    std::string output; ///< path of a file to be created
};

/// Reads the command line. Returns nothing if it only asks for the help or the version, which is
/// then printed. Throws usage_error_t.
std::optional<options_t> read_options(int count, char** arguments);

} // namespace velmolog

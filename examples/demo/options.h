/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/message.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace audit
{

/// The user's options.
struct options_t
{
    enum action_t
    {
        walk,
        replay,
        help,
        version
    };

    action_t action = walk;
    std::string directory = "/usr/share/doc";
    /// The lowest severity that is shown.
    velmoext::message_t::severity_t severity = velmoext::message_t::warning;
    std::uint64_t large = 100ULL << 20U; ///< in bytes; larger and equal files are reported
    bool progress = false;               ///< shown even if standard error is not a terminal
    std::optional<std::string> log;      ///< the log of a walk, if any
    bool plain = false;                  ///< messages are shown as they are
    std::optional<std::string> language; ///< of the texts, instead of the environment's
    std::string replayed_log;            ///< for a replay
};

/// Thrown for an invalid command line; what() is the reason, without a line end.
class usage_error_t : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Parses the arguments after the program's name, up to one that asks for help or the version.
/// Throws usage_error_t.
options_t parse_options(const std::vector<std::string>& arguments);

/// Returns the output of --help.
std::string usage_text();

/// Returns the output of --version.
std::string version_text();

} // namespace audit

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

/// What the user asks for.
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
    /// The least severity that is shown.
    velmoext::message_t::severity_t severity = velmoext::message_t::warning;
    std::uint64_t large = 100ULL << 20U; ///< files of so many bytes and more are reported
    bool progress = false;               ///< shown even where nobody may be looking
    std::optional<std::string> log;      ///< what a walk is recorded into, if anything
    bool plain = false;                  ///< messages are shown as they are
    std::optional<std::string> language; ///< of the texts, where the environment does not count
    std::string replayed_log;            ///< for a replay
};

/// A command line that makes no sense; what() says why, without a line end.
class usage_error_t : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Reads the arguments behind the program's name, up to one that asks for help or the version.
/// Throws usage_error_t.
options_t parse_options(const std::vector<std::string>& arguments);

/// What --help prints.
std::string usage_text();

/// What --version prints.
std::string version_text();

} // namespace audit

#pragma once

#include "options.h"

#include <CLI/CLI.hpp>

namespace velmolog
{

/// Adds the options of a command, which set those parts of `options` that they are about.
void add_options(CLI::App& app, command_t command, options_t& options);

} // namespace velmolog

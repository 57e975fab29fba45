#pragma once

#include "finding.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmolint
{

/// A property of an entry: an attribute, or a child element with its text.
struct property_t
{
    std::string name;
    std::string value;
    position_t position;
};

/// A `message_type` element of a configuration file.
struct entry_t
{
    position_t position;
    std::vector<property_t> properties; ///< the attributes first

    /// Returns the value that the library would find, empty if there is none.
    std::string value(const std::string& name) const;
};

struct config_file_t
{
    std::string file;
    std::vector<entry_t> entries;
};

/// Reads the file as the library does. Returns none, with a finding, if the library would ignore
/// it.
std::optional<config_file_t> read_config(const std::filesystem::path& file, findings_t& findings);

} // namespace velmolint

#pragma once

#include <unicode/messagepattern.h>

#include <string>
#include <vector>

namespace velmolint
{

/// Returns the names in quoted texts that look like placeholders: "path" in `'{path}'`, which is
/// shown as `{path}`. A quoted brace alone, `'{'`, is intended.
std::vector<std::string> find_quoted_placeholders(const icu::MessagePattern& pattern);

} // namespace velmolint

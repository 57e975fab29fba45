#pragma once

#include "common/escape_controls.h"

#include <set>
#include <string>

namespace velmolint
{

using app_common::escape_controls;

/// Returns the text, or the beginning of a long text with "..." after it.
std::string shortened(const std::string& text);

/// Returns the shortened text in quotation marks.
std::string in_quotes(const std::string& text);

/// Returns the shortened words with `begin` before and `end` after each, separated by commas.
/// Leaves out the last of very many.
std::string listed(const std::set<std::string>& words, const std::string& begin,
                   const std::string& end);

/// Returns the text without white space at its ends.
std::string trimmed(const std::string& text);

} // namespace velmolint

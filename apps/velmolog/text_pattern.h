#pragma once

#include <string>
#include <vector>

namespace velmolog
{

/// Returns the text with a mark instead of each value in it, so that texts which differ in their
/// arguments only are the same pattern.
///
/// The mark is U+007F, the letter of the value from "a", and U+007F. U+007F itself becomes a mark
/// with "~". Short values, and those after many others, are not replaced.
std::string text_pattern(const std::string& text, const std::vector<std::string>& values);

} // namespace velmolog

#pragma once

#include <string>
#include <vector>

namespace velmolog
{

/// Returns the text with a mark instead of each value in it, so that texts which differ in their
/// arguments only are the same pattern.
///
/// The mark of value number n is U+0001 and the letter number n of the alphabet. U+0001 itself is
/// U+0001 and "~". Short values, and those after many others, are not replaced.
std::string text_pattern(const std::string& text, const std::vector<std::string>& values);

} // namespace velmolog

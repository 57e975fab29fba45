#pragma once

#include <string>
#include <vector>

namespace velmolog
{

/// Returns the text with a mark instead of each value in it, so that texts which differ in their
/// arguments only are the same pattern.
///
/// The mark of value number n, from 0, is U+0001 and U+0010 + n. U+0001 itself is U+0001 and
/// U+0018. Short values, and those after many others, are not replaced.
std::string text_pattern(const std::string& text, const std::vector<std::string>& values);

} // namespace velmolog

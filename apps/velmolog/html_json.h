#pragma once

#include <string>

namespace velmolog
{

/// Returns the text as a string of JSON for an element of HTML: without `<`, so that no parser of
/// HTML ends the element in it. Bytes that are not UTF-8 become U+FFFD.
std::string json_in_html(const std::string& text);

} // namespace velmolog

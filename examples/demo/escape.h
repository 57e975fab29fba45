/// @file
#pragma once

#include <string>
#include <string_view>

namespace audit
{

/// Returns each byte as `\xHH`, the form in which this program shows unsafe bytes.
std::string escape(std::string_view bytes);

} // namespace audit

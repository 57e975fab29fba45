/// @file
#pragma once

#include <string>
#include <string_view>

namespace audit
{

/// Each byte as `\xHH`: how this program shows what must not be shown as it is.
std::string escape(std::string_view bytes);

} // namespace audit

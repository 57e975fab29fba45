#include "error_name.h"

#include "library_names.h"

#include <rova/strings.h>

#include <cstring>

namespace audit
{

std::wstring error_name(const std::error_code& error)
{
    const char* const name = ::strerrorname_np(error.value());
    return name ? rova::strings::utf8_to_utf16(name) : std::to_wstring(error.value());
}

} // namespace audit

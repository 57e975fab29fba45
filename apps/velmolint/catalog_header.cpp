#include "catalog_header.h"

#include "output_text.h"

#include <gettext-po.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace velmolint
{
namespace
{

const char type[] = "Content-Type:";
const char charset_field[] = "charset=";

struct free_t
{
    // gettext allocates it in C.
    void operator()(char* text) const { std::free(text); } // NOLINT
};

} // namespace

std::string find_charset(const std::string& header)
{
    const std::size_t found =
        header.find(charset_field, std::min(header.find(type), header.size()));
    if (found == std::string::npos)
        return std::string();
    const std::size_t begin = found + std::strlen(charset_field);
    return header.substr(begin, header.find_first_of(" \t\r\n;\\\"", begin) - begin);
}

std::string find_language(const std::string& header)
{
    const std::unique_ptr<char, free_t> value(po_header_field(header.c_str(), "Language"));
    return value ? trimmed(value.get()) : std::string();
}

} // namespace velmolint

#include "declared_encoding.h"

#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string_view>

namespace velmoext_1_4_8
{
namespace
{

// All that begin so write ASCII as it is.
bool keeps_ascii(std::string_view encoding)
{
    static const std::string_view beginnings[] = {
        "UTF-8",       "UTF8",  "US-ASCII", "ASCII", "ISO-8859", "ISO8859", "LATIN",
        "WINDOWS-125", "CP125", "KOI8",     "EUC",   "GB",       "BIG5",    "SHIFT_JIS"};
    return std::any_of(std::begin(beginnings), std::end(beginnings), [&](std::string_view one) {
        return one.size() <= encoding.size() &&
               strncasecmp(one.data(), encoding.data(), one.size()) == 0;
    });
}

// Without its bracket; a byte order mark may stand before it.
std::string_view find_declaration(std::string_view document)
{
    document.remove_prefix(std::min(document.find('<'), document.size()));
    const bool is_declared = document.substr(0, 5) == "<?xml" && document.size() > 5 &&
                             std::strchr(" \t\r\n", document[5]);
    return is_declared ? document.substr(0, document.find('>')) : std::string_view();
}

} // namespace

bool hides_its_markup(const std::string& document)
{
    std::string_view declaration = find_declaration(document);
    const std::size_t name = declaration.find("encoding");
    if (name == std::string_view::npos)
        return false;
    declaration.remove_prefix(name);
    const std::size_t quote = std::min(declaration.find_first_of("\"'"), declaration.size() - 1);
    return !keeps_ascii(declaration.substr(quote + 1));
}

void cut_hidden_markup(std::string& document)
{
    if (hides_its_markup(document))
        document.resize(std::min(document.find('>'), document.size()));
}

} // namespace velmoext_1_4_8

#include "declared_encoding.h"

#include "text_search.h"

#include <strings.h>

#include <cstddef>
#include <cstring>
#include <iterator>

namespace velmoext_1_4_8
{
namespace
{

// All that begin so write ASCII as it is.
bool keeps_ascii(const char* encoding)
{
    static const char* const beginnings[] = {
        "UTF-8",       "UTF8",  "US-ASCII", "ASCII", "ISO-8859", "ISO8859", "LATIN",
        "WINDOWS-125", "CP125", "KOI8",     "EUC",   "GB",       "BIG5",    "SHIFT_JIS"};
    return std::any_of(std::begin(beginnings), std::end(beginnings), [&](const char* beginning) {
        return strncasecmp(encoding, beginning, std::strlen(beginning)) == 0;
    });
}

// A byte order mark may stand before it.
std::size_t find_declaration(const std::string& document)
{
    const std::size_t at = find_any(document, "<", 0);
    return document.compare(at, 5, "<?xml") == 0 ? at : document.size();
}

} // namespace

bool hides_its_markup(const std::string& document)
{
    const std::size_t declaration = find_declaration(document);
    const std::size_t end = find_any(document, ">", declaration);
    const std::string text = document.substr(declaration, end - declaration);
    const std::size_t name = text.find("encoding");
    if (name == std::string::npos)
        return false;
    const std::size_t value = find_any(text, "\"'", name);
    return value == text.size() || !keeps_ascii(&text[value + 1]);
}

void cut_hidden_markup(std::string& document)
{
    if (hides_its_markup(document))
        document.resize(find_any(document, ">", 0));
}

} // namespace velmoext_1_4_8

#include "xml/declared_encoding.h"

#include "xml/text_search.h"

#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace velmoext_1_4_8
{
namespace
{

// No document is so short.
const std::size_t longest_beginning = sizeof("<?xml ") - 1;

bool is_same(std::string_view text, std::string_view other)
{
    return text.size() == other.size() && strncasecmp(text.data(), other.data(), text.size()) == 0;
}

// All that begin so write markup as ASCII does. libxml2 takes no text for UTF-16 that is none,
// whatever it declares.
bool keeps_ascii(std::string_view encoding)
{
    static const std::string_view beginnings[] = {"UTF-8",    "UTF8",    "US-ASCII",    "ASCII",
                                                  "ISO-8859", "ISO8859", "WINDOWS-125", "CP125",
                                                  "KOI8",     "EUC"};
    return is_same(encoding, "UTF-16") || is_same(encoding, "UTF16") ||
           std::any_of(std::begin(beginnings), std::end(beginnings), [&](std::string_view one) {
               return is_same(encoding.substr(0, one.size()), one);
           });
}

// Without the blank it is an instruction whose name only begins so.
bool begins_declaration(const std::string& document, std::size_t at)
{
    return begins_with(document, at, "<?xml") && is_blank(document[at + 5]);
}

// Without its bracket; a byte order mark may stand before it.
std::string_view find_declaration(const std::string& document)
{
    const std::size_t begin = find_any(document, "<", 0);
    if (!begins_declaration(document, begin))
        return std::string_view();
    return std::string_view(document).substr(begin, document.find('>', begin) - begin);
}

} // namespace

bool hides_its_markup(const std::string& document)
{
    static const std::string ebcdic = "\x4C\x6F\xA7\x94";
    if (document.compare(0, ebcdic.size(), ebcdic) == 0)
        return true;
    std::string_view declaration = find_declaration(document);
    const std::size_t name = declaration.find("encoding");
    if (name == std::string_view::npos)
        return false;
    declaration.remove_prefix(name);
    const std::size_t quote = std::min(declaration.find_first_of("\"'"), declaration.size() - 1);
    declaration.remove_prefix(quote + 1);
    return !keeps_ascii(declaration.substr(0, declaration.find_first_of("\"'")));
}

void cut_hidden_markup(std::string& document)
{
    if (hides_its_markup(document))
        document.resize(std::min(longest_beginning, document.size()));
}

} // namespace velmoext_1_4_8

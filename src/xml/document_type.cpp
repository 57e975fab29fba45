#include "xml/document_type.h"

#include "xml/text_search.h"

#include <algorithm>
#include <cstddef>

namespace velmoext_1_4_8
{
namespace
{

const std::size_t longest = 65536;

struct range_t
{
    std::size_t begin;
    std::size_t end;
};

// Behind the comment or the instruction that begins here; here, where none does.
std::size_t skip_remark(const std::string& document, std::size_t at)
{
    if (begins_with(document, at, "<!--"))
        return find_behind(document, "-->", at + 4);
    return begins_with(document, at, "<?") ? find_behind(document, "?>", at + 2) : at;
}

std::size_t skip_quoted(const std::string& document, std::size_t at)
{
    const char quote[] = {document[at], '\0'};
    return find_behind(document, quote, at + 1);
}

// What brackets it does not count within quotes and remarks.
std::size_t find_end(const std::string& document, std::size_t begin)
{
    const char* signs = "[>\"'";
    std::size_t at = find_any(document, signs, begin);
    while (at < document.size() && document[at] != '>' && document[at] != ']') {
        std::size_t next = at + 1;
        if (document[at] == '[')
            signs = "]<\"'";
        else if (document[at] == '<')
            next = std::max(next, skip_remark(document, at));
        else
            next = skip_quoted(document, at);
        at = find_any(document, signs, next);
    }
    return at;
}

// Only remarks, of which the declaration is one here, may stand before it.
range_t find_document_type(const std::string& document)
{
    std::size_t at = find_any(document, "<", 0);
    for (std::size_t next = skip_remark(document, at); next != at; next = skip_remark(document, at))
        at = find_any(document, "<", next);
    return {at, begins_with(document, at, "<!DOCTYPE") ? find_end(document, at) : at};
}

} // namespace

bool has_long_document_type(const std::string& document)
{
    if (document.size() <= longest)
        return false;
    const range_t type = find_document_type(document);
    return type.end - type.begin > longest;
}

void cut_long_document_type(std::string& document)
{
    if (has_long_document_type(document))
        document.resize(find_document_type(document).begin + longest);
}

// They stand between the beginning of the document type and its closing bracket, which is no
// further on than the last one of all.
bool refers_to_parameter_entities(const std::string& document)
{
    if (document.find('%') == std::string::npos)
        return false;
    const std::size_t end = std::min(document.rfind(']'), document.size());
    std::size_t at = document.find('%', std::min(document.find("<!DOCTYPE"), document.size()));
    for (; at < end; at = document.find('%', at + 1)) {
        const std::size_t name_end = find_any(document, "; \t\r\n%\"'<>", at + 1);
        if (name_end > at + 1 && document[name_end] == ';')
            return true;
    }
    return false;
}

} // namespace velmoext_1_4_8

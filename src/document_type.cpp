#include "document_type.h"

#include "text_search.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

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

bool begins_with(const std::string& document, std::size_t at, const char* text)
{
    return document.compare(at, std::strlen(text), text) == 0;
}

std::size_t find_behind(const std::string& document, const char* text, std::size_t from)
{
    const std::size_t found = document.find(text, from);
    return found == std::string::npos ? document.size() : found + std::strlen(text);
}

// Behind the comment or the instruction that begins here; here, where none does.
std::size_t skip_remark(const std::string& document, std::size_t at)
{
    if (begins_with(document, at, "<!--"))
        return find_behind(document, "-->", at);
    return begins_with(document, at, "<?") ? find_behind(document, "?>", at) : at;
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

// Only remarks may stand before it.
range_t find_document_type(const std::string& document)
{
    std::size_t at = find_any(document, "<", 0);
    for (std::size_t next = skip_remark(document, at); next != at; next = skip_remark(document, at))
        at = find_any(document, "<", next);
    if (!begins_with(document, at, "<!DOCTYPE"))
        return {document.size(), document.size()};
    return {at, find_end(document, at)};
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

bool refers_to_parameter_entities(const std::string& document)
{
    if (document.find('%') == std::string::npos)
        return false;
    const range_t type = find_document_type(document);
    for (std::size_t at = find_any(document, "%", type.begin); at < type.end;
         at = find_any(document, "%", at + 1)) {
        const std::size_t name_end = find_any(document, "; \t\r\n%\"'<>", at + 1);
        if (name_end < type.end && name_end > at + 1 && document[name_end] == ';')
            return true;
    }
    return false;
}

} // namespace velmoext_1_4_8

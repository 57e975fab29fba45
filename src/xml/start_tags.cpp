#include "xml/start_tags.h"

#include "xml/text_search.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace velmoext_1_4_8
{
namespace
{

// No tag of fewer bytes has an attribute too many.
const std::size_t harmless_size = most_attributes * (sizeof(" a=''") - 1);

const std::size_t most_namespace_steps = 200000000;

bool begins_element(const std::string& document, std::size_t at)
{
    return document[at] == '<' && !std::strchr("!?/", document[at + 1]);
}

bool is_end(char sign)
{
    return sign == '\0' || sign == '<' || sign == '>';
}

bool is_value(const std::string& document, std::size_t quote)
{
    std::size_t before = quote - 1;
    while (before != 0 && is_blank(document[before]))
        --before;
    return document[before] == '=';
}

// Calls it with where each attribute begins, where its value begins and where that ends. The tag
// ends, which is answered, at its bracket, at a quote that begins no value, as in what only looks
// like a tag, or where another tag begins, since none may stand within it.
template <typename Step>
std::size_t for_each_attribute(const std::string& document, std::size_t tag, const Step& step)
{
    std::size_t begin = tag + 1;
    std::size_t at = find_any(document, "<>\"'", begin);
    while (!is_end(document[at]) && is_value(document, at)) {
        const char quote_or_tag[] = {document[at], '<', '\0'};
        const std::size_t end = find_any(document, quote_or_tag, at + 1);
        if (is_end(document[end]))
            return end;
        step(begin, at, end + 1);
        begin = end + 1;
        at = find_any(document, "<>\"'", begin);
    }
    return at;
}

void leave_out_excess_of(std::string& document, std::size_t tag)
{
    std::size_t count = 0;
    std::size_t last_kept = 0;
    const auto keep = [&](std::size_t, std::size_t, std::size_t value_end) {
        if (++count <= most_attributes)
            last_kept = value_end;
    };
    std::size_t end = for_each_attribute(document, tag, keep);
    if (count <= most_attributes)
        return;
    if (document[end - 1] == '/')
        --end;
    std::fill(&document[last_kept], &document[end], ' ');
}

// Looks behind the element's name, too, which stands before the first one's.
bool declares_namespace(const std::string& document, std::size_t begin, std::size_t end)
{
    static const std::string keyword = "xmlns";
    const auto found = std::search(document.begin() + static_cast<std::ptrdiff_t>(begin),
                                   document.begin() + static_cast<std::ptrdiff_t>(end),
                                   keyword.begin(), keyword.end());
    const auto at = static_cast<std::size_t>(found - document.begin());
    if (at == end || !is_blank(document[at - 1]))
        return false;
    const char next = document[at + keyword.size()];
    return next == ':' || next == '=' || is_blank(next);
}

std::size_t count_namespaces(const std::string& document)
{
    std::size_t count = 0;
    const auto look_at_name = [&](std::size_t begin, std::size_t value, std::size_t) {
        count += declares_namespace(document, begin, value) ? 1 : 0;
    };
    for (std::size_t tag = find_any(document, "<", 0); tag < document.size();
         tag = find_any(document, "<", tag + 1))
        for_each_attribute(document, tag, look_at_name);
    return count;
}

} // namespace

void leave_out_excess_attributes(std::string& document)
{
    std::size_t tag = 0;
    while (tag < document.size() && document.size() - tag > harmless_size) {
        const std::size_t last = document.rfind('<', tag + harmless_size);
        if (last != std::string::npos && last > tag) {
            tag = last;
            continue;
        }
        if (begins_element(document, tag))
            leave_out_excess_of(document, tag);
        tag = find_any(document, "<", tag + harmless_size);
    }
}

bool has_too_many_namespaces(const std::string& document)
{
    // A shorter document has no room for so many.
    if (document.size() < 65536 || document.find("xmlns") == std::string::npos)
        return false;
    const auto names = std::count_if(document.begin(), document.end(),
                                     [](char sign) { return sign == '<' || sign == '='; });
    return count_namespaces(document) > most_namespace_steps / static_cast<std::size_t>(names + 1);
}

} // namespace velmoext_1_4_8

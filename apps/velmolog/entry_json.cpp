#include "entry_json.h"

#include <rova/strings.h>

#include <cstddef>
#include <string>
#include <utility>

namespace velmolog
{
namespace
{

using ROVA_2_18::strings::utf16_to_utf8;

const std::size_t max_members = 13;

} // namespace

json_t json_of(candidate_t& candidate)
{
    const entry_t& entry = candidate.entry();
    const auto content = entry.message->get_content();
    const texts_t& texts = candidate.texts();
    json_t::object_t object;
    object.reserve(max_members);
    // No name is there twice, so none is looked up.
    const auto add = [&object](const char* name, auto&& value) {
        object.emplace_back(name, std::forward<decltype(value)>(value));
    };
    add("log", entry.log);
    add("offset", entry.begin.offset);
    add("line", entry.begin.line);
    const auto timestamp = content.elements.find(L"timestamp");
    if (timestamp != content.elements.end())
        add("timestamp", utf16_to_utf8(timestamp->second));
    add("severity", name_of(candidate.severity()));
    add("type", candidate.type());
    add("source", candidate.source());
    add("args", object_of(content.args));
    add("elements", object_of(content.elements));
    add("attributes", object_of(content.attributes));
    if (!texts.title.empty())
        add("title", texts.title);
    add("text", texts.text);
    if (!entry.observed.empty())
        add("observed", entry.observed);
    return object;
}

} // namespace velmolog

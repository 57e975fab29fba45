#include "entry_json.h"

#include <rova/strings.h>

#include <string>

namespace velmolog
{

using ROVA_2_18::strings::utf16_to_utf8;

json_t json_of(candidate_t& candidate)
{
    const entry_t& entry = candidate.entry();
    const auto content = entry.message->get_content();
    json_t object = {
        {"log", entry.log}, {"offset", entry.begin.offset}, {"line", entry.begin.line}};
    const auto timestamp = content.elements.find(L"timestamp");
    if (timestamp != content.elements.end())
        object["timestamp"] = utf16_to_utf8(timestamp->second);
    object["severity"] = name_of(candidate.severity());
    object["type"] = candidate.type();
    object["source"] = candidate.source();
    object["args"] = object_of(content.args);
    object["elements"] = object_of(content.elements);
    object["attributes"] = object_of(content.attributes);
    const texts_t& texts = candidate.texts();
    if (!texts.title.empty())
        object["title"] = texts.title;
    object["text"] = texts.text;
    if (!entry.observed.empty())
        object["observed"] = entry.observed;
    return object;
}

} // namespace velmolog

#include "round_trip.h"

#include "carried_message.h"
#include "require.h"

#include <velmoext1/string_message_serializer.h>

#include <algorithm>
#include <map>
#include <string>

namespace
{

using velmoext_1_4_8::message_t;
using velmoext_1_4_8::string_message_serializer_t;

typedef std::map<std::wstring, std::wstring> texts_t;

// Far below the length at which a reader refuses a text or a name is left out.
const std::size_t longest_text = 1000000;
const std::size_t longest_name = 10000;

template <typename Check>
bool all_of(const texts_t& texts, const Check& check)
{
    return std::all_of(texts.begin(), texts.end(), check);
}

bool is_short(const texts_t& texts)
{
    return all_of(texts, [](const auto& text) {
        return text.first.size() <= longest_name && text.second.size() <= longest_text;
    });
}

bool is_short(const message_t& message)
{
    const message_t::message_content_t content = message.get_content();
    return is_short(content.attributes) && is_short(content.args) && is_short(content.elements) &&
           message.get_type().size() <= longest_text;
}

// A prefix that is declared is lost on the way through a tree, and what is left of the name can
// mean another thing. "xml" is declared without a declaration.
bool has_known_prefixes(const message_t::message_content_t& content)
{
    const auto is_unaffected = [](const auto& text) {
        return text.first.compare(0, 6, L"xmlns:") != 0 && text.first.compare(0, 4, L"xml:") != 0;
    };
    return !all_of(content.attributes, is_unaffected) || !all_of(content.elements, is_unaffected);
}

} // namespace

void require_round_trip(boost::shared_ptr<message_t> message)
{
    const std::wstring written = string_message_serializer_t::message_to_xml_string(message);
    const auto read = string_message_serializer_t::xml_string_to_message(written);
    if (!is_short(*message))
        return;
    require(read != nullptr, "what was written can be read");
    const message_t expected = carried_message(*message);
    if (has_known_prefixes(message->get_content()))
        require(read->get_type() == expected.get_type(), "the same type");
    else
        require_same(*read, expected);
}

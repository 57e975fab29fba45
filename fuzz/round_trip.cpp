#include "round_trip.h"

#include <velmoext1/string_message_serializer.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

namespace
{

using velmoext_1_4_8::message_t;
using velmoext_1_4_8::string_message_serializer_t;

typedef std::map<std::wstring, std::wstring> texts_t;

// Far below the length at which a reader refuses a text.
const std::size_t longest_text = 1000000;

bool has_short_texts(const texts_t& texts)
{
    return std::all_of(texts.begin(), texts.end(), [](const auto& text) {
        return std::max(text.first.size(), text.second.size()) <= longest_text;
    });
}

// An empty name ends the writing. A prefix is lost on the way through a tree, and a name that
// declares or uses one may mean another thing when it is read again.
bool has_plain_names(const texts_t& texts)
{
    return std::all_of(texts.begin(), texts.end(), [](const auto& text) {
        return !text.first.empty() && text.first != L"xmlns" &&
               text.first.find(L':') == std::wstring::npos;
    });
}

bool is_comparable(const message_t& message)
{
    const message_t::message_content_t content = message.get_content();
    return has_plain_names(content.attributes) && has_plain_names(content.elements) &&
           content.args.count(std::wstring()) == 0 && has_short_texts(content.attributes) &&
           has_short_texts(content.elements) && has_short_texts(content.args) &&
           message.get_type().size() <= longest_text;
}

std::wstring as_carried(std::wstring text)
{
    std::replace_if(
        text.begin(), text.end(),
        [](wchar_t unit) {
            return (unit < L' ' && unit != L'\t' && unit != L'\n' && unit != L'\r') ||
                   unit == L'\xFFFE' || unit == L'\xFFFF';
        },
        L'\xFFFD');
    return text;
}

// Two names can become one; the one that is written first is kept.
texts_t as_carried(const texts_t& texts)
{
    texts_t carried;
    for (const auto& text : texts)
        carried.emplace(as_carried(text.first), as_carried(text.second));
    return carried;
}

} // namespace

void require(bool condition, const char* what)
{
    if (condition)
        return;
    std::cerr << "does not hold: " << what << '\n';
    std::abort();
}

void require_round_trip(boost::shared_ptr<message_t> message)
{
    const std::wstring written = string_message_serializer_t::message_to_xml_string(message);
    const auto read = string_message_serializer_t::xml_string_to_message(written);
    if (!is_comparable(*message))
        return;
    require(read != nullptr, "what was written can be read");
    require(read->get_type() == as_carried(message->get_type()), "same type");
    require(read->get_severity() == message->get_severity(), "same severity");

    const message_t::message_content_t before = message->get_content();
    const message_t::message_content_t after = read->get_content();
    require(after.args == as_carried(before.args), "same arguments");
    require(after.attributes == as_carried(before.attributes), "same attributes");
    require(after.elements == as_carried(before.elements), "same elements");
}

// Whatever a message holds, it can be written, and read as far as XML can carry it.
//
// An input has one fact of the message per line: a letter, a blank and the fact.
//
//     t TYPE      s SEVERITY    n NUMBER
//     a ARGUMENT=TEXT    @ ATTRIBUTE=TEXT    e ELEMENT=TEXT
#include "fuzz_target.h"
#include "input_text.h"
#include "quiet_xml.h"
#include "round_trip.h"

#include <boost/make_shared.hpp>

#include <cstdlib>
#include <map>
#include <string>

namespace
{

using velmoext_1_4_8::message_t;

typedef std::map<std::wstring, std::wstring> texts_t;

std::int32_t to_number(const std::string& text)
{
    return static_cast<std::int32_t>(std::strtoll(text.c_str(), nullptr, 10));
}

void add_text(texts_t& texts, const std::string& fact)
{
    const auto parts = split_once(fact, '=');
    texts[to_wide(parts.first)] = to_wide(parts.second);
}

void tell(message_t& message, message_t::message_content_t& content, char kind,
          const std::string& fact)
{
    switch (kind) {
    case 't':
        return message.set_type(to_wide(fact));
    case 's':
        return message.set_severity(static_cast<message_t::severity_t>(to_number(fact)));
    case 'n':
        content.next_arg_number = to_number(fact);
        return;
    case 'a':
        return add_text(content.args, fact);
    case '@':
        return add_text(content.attributes, fact);
    case 'e':
        return add_text(content.elements, fact);
    default:
        return;
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    forbid_xml_output();
    const auto message = boost::make_shared<message_t>();
    message_t::message_content_t content;
    for (const std::string& line : split(std::string(data, data + size), '\n'))
        if (line.size() >= 2)
            tell(*message, content, line[0], line.substr(2));
    message->set_content(content);
    require_round_trip(message);
    return 0;
}

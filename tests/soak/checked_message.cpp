#include "checked_message.h"

#include <velmoext1/string_message_serializer.h>

#include <boost/make_shared.hpp>

#include <cstdint>
#include <iterator>

namespace soak
{
namespace
{

using velmoext_1_4_8::message_t;
using velmoext_1_4_8::string_message_serializer_t;

const wchar_t* const types[] = {L"soak_first", L"soak_second", L"soak_third"};
const wchar_t sum_name[] = L"sum";
const wchar_t common_beginning[] = L"soak_";
const wchar_t odd_units[] = {L'<',    L'>',      L'&',      L'"',      L'\'',
                             L'/',    L'a',      L' ',      L'\n',     L'\x1',
                             L'\xE4', L'\xD800', L'\xDC00', L'\xFFFE', L'\x1F4C1'};

wchar_t odd_unit(std::mt19937& random)
{
    return odd_units[random() % std::size(odd_units)];
}

std::uint64_t add(std::uint64_t sum, const std::wstring& text)
{
    for (const wchar_t unit : text)
        sum = sum * 31 + static_cast<std::uint64_t>(unit);
    return sum * 31;
}

std::wstring sum_of(const std::wstring& type, const message_t::message_content_t& content)
{
    std::uint64_t sum = add(0, type);
    for (const auto& [name, text] : content.args)
        sum = name == sum_name ? sum : add(add(sum, name), text);
    for (const auto& [name, text] : content.elements)
        sum = add(add(sum, name), text);
    return std::to_wstring(sum);
}

} // namespace

std::wstring plain_text(std::mt19937& random, std::size_t max_length)
{
    std::wstring text(1 + random() % max_length, L'a');
    for (wchar_t& unit : text)
        unit = static_cast<wchar_t>(L'a' + random() % 26);
    return text;
}

std::wstring odd_text(std::mt19937& random)
{
    if (random() % 2 == 0) {
        const auto message = make_checked_message(random, L"odd");
        message->set_type(L"odd");
        std::wstring text = string_message_serializer_t::message_to_xml_string(message);
        text[random() % text.size()] = odd_unit(random);
        return text.substr(0, random() % 4 == 0 ? random() % text.size() : text.size());
    }
    std::wstring text(random() % 40, L' ');
    for (wchar_t& unit : text)
        unit = odd_unit(random);
    return text;
}

boost::shared_ptr<message_t> make_checked_message(std::mt19937& random, const std::wstring& source)
{
    message_t::message_content_t content;
    for (std::size_t i = random() % 5; i != 0; --i)
        content.args.emplace(plain_text(random, 12), plain_text(random, 60));
    for (std::size_t i = random() % 2; i != 0; --i)
        content.elements.emplace(L"element", plain_text(random, 20));
    const auto message = boost::make_shared<message_t>();
    message->set_type(types[random() % std::size(types)]);
    content.args[sum_name] = sum_of(message->get_type(), content);
    message->set_content(content);
    message->set_source(source);
    message->set_severity(static_cast<message_t::severity_t>(random() % 5));
    message->set_flags(static_cast<int>(random() % 4));
    return message;
}

bool is_intact(const message_t& message)
{
    const message_t::message_content_t content = message.get_content();
    const auto sum = content.args.find(sum_name);
    return sum == content.args.end() || message.get_type().rfind(common_beginning, 0) != 0 ||
           sum->second == sum_of(message.get_type(), content);
}

} // namespace soak

#include "random_messages.h"

#include <array>
#include <map>

using velmoext_1_4_8::message_t;

namespace
{

typedef std::map<std::wstring, std::wstring> string_map_t;

const std::array<const wchar_t*, 36> known_keys = {
    L"tool",      L"source",  L"name",      L"arg", L"arg1",  L"arg2",   L"type",     L"severity",
    L"msg",       L"log",     L"timestamp", L"a",   L"b",     L"c",      L"p:a",      L"q:a",
    L"p:b",       L"a:b:c",   L"a:b:1",     L"a:1", L":",     L":a",     L"a:",       L"a::b",
    L"xmlns",     L"xmlns:p", L"xmlns:q",   L"xml", L"xml:a", L"xml:id", L"xml:lang", L"xmlns:xml",
    L"xml:space", L"x-1.2_3", L"_",         L"N"};

const std::array<const wchar_t*, 12> odd_keys = {L"a b", L"1",  L"-a", L"a<",  L"a&",   L"a\"",
                                                 L"a=",  L" a", L"a/", L"a\n", L"\x01", L"\xD7"};

const std::array<const wchar_t*, 24> fragments = {
    L"&",   L"<",    L">",    L"\"",  L"'",         L"]]>",  L"&amp;",  L"&#13;",
    L"<a>", L"</a>", L"<!--", L"-->", L"<![CDATA[", L"]]",   L"<?p ?>", L"\r\n",
    L"\r",  L"\n",   L"\t",   L"%a;", L"<!DOCTYPE", L"INFO", L"error",  L"http://a/b"};

const std::array<unsigned, 28> odd_elements = {
    0x0,     0x1,     0x8,     0xB,     0x1F,    0x7F,     0x80,     0x85,      0x9F,   0x2028,
    0xD7FF,  0xD800,  0xDBFF,  0xDC00,  0xDFFF,  0xE000,   0xFDD0,   0xFFFD,    0xFFFE, 0xFFFF,
    0x10000, 0x1F600, 0x1FFFE, 0xEFFFF, 0xF0000, 0x10FFFF, 0x110000, 0xFFFFFFFF};

void append_pair(std::wstring& text, std::size_t character)
{
    text.push_back(static_cast<wchar_t>(0xD7C0 + (character >> 10U)));
    text.push_back(static_cast<wchar_t>(0xDC00 + (character & 0x3FFU)));
}

void append_run(random_source_t& random, std::wstring& text, std::size_t length)
{
    static const std::array<std::size_t, 5> scripts = {'a', 0xE0, 0x430, 0x4E00, 0x10400};
    const std::size_t first = random.pick(scripts);
    for (; length != 0; --length) {
        const std::size_t character = first + random.below(16);
        if (character < 0x10000)
            text.push_back(static_cast<wchar_t>(character));
        else
            append_pair(text, character);
    }
}

std::wstring random_name(random_source_t& random)
{
    std::wstring name;
    append_run(random, name, random.between(1, 4));
    if (random.one_in(3))
        name += L"-" + std::to_wstring(random.below(10));
    return name;
}

std::wstring random_key(random_source_t& random)
{
    switch (random.below(12)) {
    case 0:
        return random.pick(odd_keys);
    case 1:
        return random.one_in(8) ? std::wstring() : random_text(random);
    case 2:
        // The same character as one element; append_run() gives it in two.
        return std::wstring(1, static_cast<wchar_t>(0x10400 + random.below(4)));
    case 3: {
        std::wstring pair;
        append_pair(pair, 0x10400 + random.below(4));
        return pair;
    }
    case 4:
        return std::wstring(1, static_cast<wchar_t>(random.pick(odd_elements))) + L"a";
    case 5:
    case 6:
    case 7:
        return random_name(random);
    default:
        return random.pick(known_keys);
    }
}

string_map_t random_texts(random_source_t& random)
{
    string_map_t texts;
    std::size_t count = random.one_in(3) ? 0 : random.below(6);
    if (random.one_in(200))
        count = 40;
    for (; count != 0; --count)
        texts[random_key(random)] = random_text(random);
    return texts;
}

} // namespace

std::wstring random_text(random_source_t& random)
{
    std::wstring text;
    for (std::size_t parts = random.below(6); parts != 0; --parts)
        switch (random.below(8)) {
        case 0:
        case 1:
            text += random.pick(fragments);
            break;
        case 2:
            text.push_back(static_cast<wchar_t>(random.pick(odd_elements)));
            break;
        case 3:
            append_run(random, text, random.one_in(4) ? random.between(90, 700) : random.below(40));
            break;
        case 4:
            text += std::wstring(random.one_in(100) ? random.between(900, 9000) : random.below(9),
                                 static_cast<wchar_t>(random.between(0x20, 0x7E)));
            break;
        default:
            append_run(random, text, random.below(12));
        }
    return text;
}

message_t random_message(random_source_t& random)
{
    message_t message;
    message_t::message_content_t content;
    content.attributes = random_texts(random);
    content.args = random_texts(random);
    content.elements = random_texts(random);
    message.set_content(content);
    message.set_type(random.one_in(8) ? std::wstring() : random_text(random));
    message.set_severity(static_cast<message_t::severity_t>(
        random.one_in(20) ? static_cast<int>(random.below(2000)) - 1000
                          : static_cast<int>(random.below(5))));
    message.set_flags(1);
    return message;
}

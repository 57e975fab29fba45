// A thread keeps its reader and its writer from one document to the next. An earlier document must
// not affect a later one.

#include "support.h"

#include <velmoext1/string_message_serializer.h>

#include <gtest/gtest.h>

#include <thread>

using namespace velmoext_1_4_8;

namespace
{

typedef string_message_serializer_t serializer_t;

const std::wstring odd_texts[] = {
    L"",
    L"<",
    L"<msg",
    L"<msg/>",
    L"<msg><type>t</type></msg>",
    L"<msg a='1' a='2'><type>t</type>",
    L"<msg xmlns:p='urn:p' p:a='1'><p:arg name='n'>x</p:arg><arg>y</arg></msg>",
    L"<log><msg><type>inside</type></msg></log>",
    L"<!DOCTYPE msg [<!ENTITY e 'x'><!ATTLIST msg a CDATA 'd'>]><msg><e>&e;&e;</e></msg>",
    L"<!DOCTYPE msg SYSTEM 'file:///none'><msg><arg name='n'>&e;</arg></msg>",
    L"<msg><arg name='n'>&unknown;&#x110000;&#65;</arg><severity>error</severity></msg>",
    L"<?xml version='1.0' encoding='ISO-8859-1'?><msg><type>\xE9</type></msg>",
    L"<?xml version='1.0' standalone='yes'?><!-- c --><?p i?><msg><e><![CDATA[<x>]]></e></msg>",
    L"<msg xml:space='preserve' xml:lang='de'><type> t </type></msg>",
    L"<a/><b/><msg><type>later</type></msg>",
    L"<msg><type>" + std::wstring(100000, L'x') + L"</type></msg>",
};

std::wstring text_of(const message_ptr_t& message)
{
    if (!message)
        return L"none";
    const auto content = message->get_content();
    std::wstring text = message->get_type() + L'|' + std::to_wstring(message->get_severity());
    for (const string_map_t* const texts : {&content.attributes, &content.args, &content.elements})
        for (const auto& [name, value] : *texts)
            text += L'|' + name + L'=' + value;
    return text;
}

std::wstring read(const std::wstring& text)
{
    return text_of(serializer_t::xml_string_to_message(text));
}

// Reads the text on a thread that has read nothing before.
std::wstring read_first(const std::wstring& text)
{
    std::wstring result;
    std::thread([&] { result = read(text); }).join();
    return result;
}

std::wstring write_first(const message_ptr_t& message)
{
    std::wstring result;
    std::thread([&] { result = serializer_t::message_to_xml_string(message); }).join();
    return result;
}

std::vector<message_ptr_t> make_odd_messages()
{
    return {make_message(L""),
            make_message(L"type", message_t::error),
            make_message(L"<&>\xE9\"\n\t"),
            make_message(make_content({{L"", L"no name"}, {L"a", L"never written"}})),
            make_message(make_content({{L"a b", L"no name"}, {L"tool", L"x"}}, {{L"", L""}})),
            make_message(make_content({}, {{L"n\x1", L"v\xD800"}}, {{L"", L"no name"}})),
            make_message(make_content({{L"a", std::wstring(100000, L'x')}}))};
}

} // namespace

TEST(serializer_reuse_test, a_text_is_read_the_same_after_any_other_text)
{
    for (const std::wstring& text : odd_texts) {
        const std::wstring expected = read_first(text);
        for (const std::wstring& before : odd_texts) {
            read(before);
            EXPECT_EQ(read(text), expected) << testing::PrintToString(before.substr(0, 80));
        }
    }
}

TEST(serializer_reuse_test, a_message_is_written_the_same_after_any_other_message)
{
    const auto messages = make_odd_messages();
    for (const message_ptr_t& message : messages) {
        const std::wstring expected = write_first(message);
        for (const message_ptr_t& before : messages) {
            serializer_t::message_to_xml_string(before);
            EXPECT_EQ(serializer_t::message_to_xml_string(message), expected);
        }
    }
}

TEST(serializer_reuse_test, many_different_names_are_read_in_sequence)
{
    for (int i = 0; i < 8000; ++i) {
        const std::wstring name = L"n" + std::to_wstring(i) + std::wstring(4000, L'x');
        const auto message =
            serializer_t::xml_string_to_message(L"<msg><" + name + L">v</" + name + L"></msg>");
        ASSERT_TRUE(message);
        ASSERT_EQ(message->get_content().elements, (string_map_t{{name, L"v"}})) << i;
    }
}

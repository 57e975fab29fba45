#include "xml/characters.h"

#include "support.h"
#include "xml/handles.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <libxml/parser.h>

#include <limits>
#include <memory>

using namespace velmoext_1_4_8;

namespace
{

// The bounds of the characters that XML allows in names, and the characters just outside.
std::vector<unsigned> boundary_characters()
{
    std::vector<unsigned> characters;
    for (unsigned c = 1; c < 0x400; ++c)
        if (c != ':') // has its own test: libxml2 splits the name there
            characters.push_back(c);
    for (const unsigned bound : {0x1FFFU, 0x200CU, 0x200DU,  0x203FU,  0x2040U,  0x2070U,  0x218FU,
                                 0x2C00U, 0x2FEFU, 0x3001U,  0xD7FFU,  0xE000U,  0xF900U,  0xFDCFU,
                                 0xFDF0U, 0xFFFDU, 0x10000U, 0x1F600U, 0xEFFFFU, 0x10FFFEU})
        for (unsigned c = bound - 1; c <= bound + 1; ++c)
            if (c < 0xD800 || c > 0xDFFF)
                characters.push_back(c);
    return characters;
}

bool is_name_for_libxml2(const std::wstring& name)
{
    const std::string document = "<" + ROVA_2_18::strings::utf16_to_utf8(name) + "/>";
    const std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> read(
        xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, "UTF-8",
                      XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
        xmlFreeDoc);
    return read && from_xml(xmlDocGetRootElement(read.get())->name) ==
                       ROVA_2_18::strings::utf16_to_utf8(name);
}

} // namespace

TEST(characters_test, characters_that_xml_allows_stay)
{
    const std::wstring text = L"\t\n\r ~\x7F\x80\x85\xE9\x2028\xD7FF\xE000\xFFFD";
    EXPECT_EQ(xml_utf8(text), ROVA_2_18::strings::utf16_to_utf8(text));
}

TEST(characters_test, characters_beyond_the_bmp_stay_in_both_forms)
{
    EXPECT_EQ(xml_utf8(units({0xD83D, 0xDE00})), "\xF0\x9F\x98\x80");
    EXPECT_EQ(xml_utf8(units({0x1F600})), "\xF0\x9F\x98\x80");
    EXPECT_EQ(xml_utf8(units({0x1FFFE})), "\xF0\x9F\xBF\xBE");
}

TEST(characters_test, each_character_that_xml_does_not_allow_becomes_the_replacement_character)
{
    const std::string replaced = "a\xEF\xBF\xBD"
                                 "b";
    for (unsigned c = 0; c < 0x20; ++c) {
        if (c == '\t' || c == '\n' || c == '\r')
            continue;
        EXPECT_EQ(xml_utf8(units({'a', c, 'b'})), replaced) << c;
    }
    for (const unsigned c : {0xD800U, 0xDBFFU, 0xDC00U, 0xDFFFU, 0xFFFEU, 0xFFFFU, 0x110000U,
                             0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(xml_utf8(units({'a', c, 'b'})), replaced) << c;
}

TEST(characters_test, the_first_character_of_a_name_is_accepted_as_by_libxml2)
{
    for (const unsigned c : boundary_characters())
        EXPECT_EQ(is_xml_name(units({c, 'a'})), is_name_for_libxml2(units({c, 'a'}))) << c;
}

TEST(characters_test, a_later_character_of_a_name_is_accepted_as_by_libxml2)
{
    for (const unsigned c : boundary_characters())
        EXPECT_EQ(is_xml_name(units({'a', c, 'b'})), is_name_for_libxml2(units({'a', c, 'b'})))
            << c;
}

TEST(characters_test, a_name_may_have_a_colon_anywhere)
{
    for (const wchar_t* name : {L":", L":a", L"a:", L"a:b", L"a::b", L"xmlns:a", L"xml:id"})
        EXPECT_TRUE(is_xml_name(name)) << testing::PrintToString(std::wstring(name));
}

TEST(characters_test, a_name_may_have_characters_beyond_the_bmp_in_both_forms)
{
    EXPECT_TRUE(is_xml_name(units({0xD801, 0xDC00})));
    EXPECT_TRUE(is_xml_name(units({'a', 0x10400})));
    EXPECT_TRUE(is_xml_name(units({0xDB7F, 0xDFFF}))); // the last of plane 14
    EXPECT_FALSE(is_xml_name(units({0xDB80, 0xDC00})));
    EXPECT_FALSE(is_xml_name(units({'a', 0xF0000})));
}

TEST(characters_test, a_text_with_invalid_characters_is_not_a_name)
{
    for (const auto& text :
         {units({'a', 0xD800}), units({0xDC00}), units({'a', 0xD800, 'b'}), units({'a', 0}),
          units({'a', 0xFFFE}), units({'a', 0x110000}), units({0xD801, 0x1DC00})})
        EXPECT_FALSE(is_xml_name(text)) << testing::PrintToString(text);
    EXPECT_TRUE(is_xml_name(L"a\xFFFD"));
}

TEST(characters_test, a_text_that_is_empty_or_has_other_characters_is_not_a_name)
{
    for (const wchar_t* text : {L"", L" ", L"a b", L"a ", L"-a", L"1a", L".a", L"a<b", L"a&b"})
        EXPECT_FALSE(is_xml_name(text)) << testing::PrintToString(std::wstring(text));
}

TEST(characters_test, an_ascii_name_is_a_name_with_only_ascii_characters)
{
    for (unsigned c = 1; c < 0x100; ++c)
        for (const std::wstring& name : {units({c}), units({'a', c}), units({c, 'a'})}) {
            const std::string bytes(name.begin(), name.end());
            EXPECT_EQ(is_ascii_name(bytes), c < 0x80 && is_xml_name(name)) << c;
        }
    EXPECT_FALSE(is_ascii_name(""));
}

TEST(characters_test, an_xml_character_is_not_replaced_in_a_text)
{
    for (const unsigned c : boundary_characters()) {
        const std::wstring text = units({c});
        EXPECT_EQ(is_xml_character(c), xml_utf8(text) == ROVA_2_18::strings::utf16_to_utf8(text))
            << c;
    }
    EXPECT_FALSE(is_xml_character(0xD800));
    EXPECT_FALSE(is_xml_character(0x110000));
}

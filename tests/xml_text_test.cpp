#include "xml/xml_text.h"

#include "encoding/element_names.h"
#include "support.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <libxml/parser.h>

#include <limits>
#include <memory>

using namespace velmoext_1_4_8;

namespace
{

// The bounds of what XML counts as a name, and the characters just outside.
std::vector<unsigned> interesting_characters()
{
    std::vector<unsigned> characters;
    for (unsigned c = 1; c < 0x400; ++c)
        if (c != ':') // has a test of its own: libxml2 takes the name apart there
            characters.push_back(c);
    for (const unsigned bound : {0x1FFFU, 0x200CU, 0x200DU,  0x203FU,  0x2040U,  0x2070U,  0x218FU,
                                 0x2C00U, 0x2FEFU, 0x3001U,  0xD7FFU,  0xE000U,  0xF900U,  0xFDCFU,
                                 0xFDF0U, 0xFFFDU, 0x10000U, 0x1F600U, 0xEFFFFU, 0x10FFFEU})
        for (unsigned c = bound - 1; c <= bound + 1; ++c)
            if (c < 0xD800 || c > 0xDFFF)
                characters.push_back(c);
    return characters;
}

bool libxml2_reads_name(const std::wstring& name)
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

TEST(xml_text_test, characters_that_xml_carries_stay)
{
    const std::wstring text = L"\t\n\r ~\x7F\x80\x85\xE9\x2028\xD7FF\xE000\xFFFD";
    EXPECT_EQ(xml_text_t(text).utf8(), ROVA_2_18::strings::utf16_to_utf8(text));
}

TEST(xml_text_test, characters_beyond_the_bmp_stay_in_both_spellings)
{
    EXPECT_EQ(xml_text_t(units({0xD83D, 0xDE00})).utf8(), "\xF0\x9F\x98\x80");
    EXPECT_EQ(xml_text_t(units({0x1F600})).utf8(), "\xF0\x9F\x98\x80");
    EXPECT_EQ(xml_text_t(units({0x1FFFE})).utf8(), "\xF0\x9F\xBF\xBE");
}

TEST(xml_text_test, each_character_that_xml_cannot_carry_becomes_the_replacement_character)
{
    const std::string replaced = "a\xEF\xBF\xBD"
                                 "b";
    for (unsigned c = 0; c < 0x20; ++c) {
        if (c == '\t' || c == '\n' || c == '\r')
            continue;
        EXPECT_EQ(xml_text_t(units({'a', c, 'b'})).utf8(), replaced) << c;
    }
    for (const unsigned c : {0xD800U, 0xDBFFU, 0xDC00U, 0xDFFFU, 0xFFFEU, 0xFFFFU, 0x110000U,
                             0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(xml_text_t(units({'a', c, 'b'})).utf8(), replaced) << c;
}

TEST(xml_text_test, a_name_is_what_libxml2_reads_as_one_at_its_start)
{
    for (const unsigned c : interesting_characters())
        EXPECT_EQ(is_xml_name(units({c, 'a'})), libxml2_reads_name(units({c, 'a'}))) << c;
}

TEST(xml_text_test, a_name_is_what_libxml2_reads_as_one_further_on)
{
    for (const unsigned c : interesting_characters())
        EXPECT_EQ(is_xml_name(units({'a', c, 'b'})), libxml2_reads_name(units({'a', c, 'b'}))) << c;
}

TEST(xml_text_test, a_name_may_have_a_colon_anywhere)
{
    for (const wchar_t* name : {L":", L":a", L"a:", L"a:b", L"a::b", L"xmlns:a", L"xml:id"})
        EXPECT_TRUE(is_xml_name(name)) << testing::PrintToString(std::wstring(name));
}

TEST(xml_text_test, a_name_may_spell_a_character_beyond_the_bmp_in_either_way)
{
    EXPECT_TRUE(is_xml_name(units({0xD801, 0xDC00})));
    EXPECT_TRUE(is_xml_name(units({'a', 0x10400})));
    EXPECT_TRUE(is_xml_name(units({0xDB7F, 0xDFFF}))); // the last of plane 14
    EXPECT_FALSE(is_xml_name(units({0xDB80, 0xDC00})));
    EXPECT_FALSE(is_xml_name(units({'a', 0xF0000})));
}

TEST(xml_text_test, what_had_to_be_replaced_is_no_name)
{
    for (const auto& text :
         {units({'a', 0xD800}), units({0xDC00}), units({'a', 0xD800, 'b'}), units({'a', 0}),
          units({'a', 0xFFFE}), units({'a', 0x110000}), units({0xD801, 0x1DC00})})
        EXPECT_FALSE(is_xml_name(text)) << testing::PrintToString(text);
    EXPECT_TRUE(is_xml_name(L"a\xFFFD"));
}

TEST(xml_text_test, an_empty_text_and_one_with_a_blank_are_no_names)
{
    for (const wchar_t* text : {L"", L" ", L"a b", L"a ", L"-a", L"1a", L".a", L"a<b", L"a&b"})
        EXPECT_FALSE(is_xml_name(text)) << testing::PrintToString(std::wstring(text));
}

TEST(xml_text_test, only_printable_ascii_without_markup_is_plain)
{
    for (unsigned c = 0; c < 0x100; ++c) {
        const bool is_plain = c >= ' ' && c <= '~' &&
                              std::string("\"&<>").find(static_cast<char>(c)) == std::string::npos;
        EXPECT_EQ(xml_text_t(units({'a', c, 'b'})).is_plain(), is_plain) << c;
    }
    EXPECT_TRUE(xml_text_t(L"").is_plain());
    for (const unsigned c : {0x100U + 'a', 0x10000U + 'a', 0x80000000U + 'a'})
        EXPECT_FALSE(xml_text_t(units({c})).is_plain()) << c;
}

// A writer is handed plain text raw, so it must not have anything to escape in it.
TEST(xml_text_test, the_writer_escapes_nothing_in_a_plain_text)
{
    for (unsigned c = 1; c < 0x80; ++c) {
        const xml_text_t text(units({c}));
        const std::unique_ptr<xmlChar, xmlFreeFunc> escaped(
            xmlEncodeSpecialChars(nullptr, to_xml(text.utf8())), xmlFree);
        EXPECT_TRUE(!text.is_plain() || from_xml(escaped.get()) == text.utf8()) << c;
    }
}

TEST(xml_text_test, one_object_takes_text_after_text)
{
    xml_text_t text(L"a long text that is not plain & has to be escaped");
    for (const wchar_t* next : {L"short", L"", L"longer than the last one", L"\xE9", L"plain"}) {
        text.assign(next);
        EXPECT_EQ(text.utf8(), ROVA_2_18::strings::utf16_to_utf8(next));
        EXPECT_EQ(text.is_plain(), std::wstring(next) != L"\xE9");
    }
}

TEST(xml_text_test, the_size_of_an_attribute_counts_what_the_writer_escapes)
{
    EXPECT_EQ(size_as_xml_attribute(xml_text_t(L"")), 0U);
    EXPECT_EQ(size_as_xml_attribute(xml_text_t(L"plain")), 5U);
    EXPECT_EQ(size_as_xml_attribute(xml_text_t(L"\"")), std::string("&quot;").size());
    EXPECT_EQ(size_as_xml_attribute(xml_text_t(L"&")), std::string("&amp;").size());
    EXPECT_EQ(size_as_xml_attribute(xml_text_t(L"<>")), std::string("&lt;&gt;").size());
    EXPECT_EQ(size_as_xml_attribute(xml_text_t(L"\n\r\t")), std::string("&#10;&#13;&#9;").size());
    EXPECT_EQ(size_as_xml_attribute(xml_text_t(L"\xE9'")), 3U);
}

#include "xml/references.h"

#include "repeated_text.h"
#include "xml/characters.h"
#include "xml/error_scope.h"
#include "xml/handles.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <libxml/parser.h>

#include <optional>
#include <string>
#include <vector>

using namespace velmoext_1_4_8;

namespace
{

using ROVA_2_18::strings::utf8_to_utf16;

// Encodes any number as UTF-8 does, including a surrogate.
std::string encoded(unsigned character)
{
    std::string utf8;
    const auto add = [&](unsigned first, unsigned shift) {
        utf8.push_back(static_cast<char>(first | (character >> shift)));
        while (shift != 0) {
            shift -= 6;
            utf8.push_back(static_cast<char>(0x80U | ((character >> shift) & 0x3FU)));
        }
    };
    if (character < 0x80)
        add(0, 0);
    else if (character < 0x800)
        add(0xC0, 6);
    else if (character < 0x10000)
        add(0xE0, 12);
    else
        add(0xF0, 18);
    return utf8;
}

// All of the BMP, and the bounds of the characters beyond it.
std::vector<unsigned> characters()
{
    std::vector<unsigned> characters;
    for (unsigned character = 1; character != 0x10010; ++character)
        characters.push_back(character);
    for (const unsigned character :
         {0x1F600U, 0x1FFFEU, 0x1FFFFU, 0xEFFFFU, 0xF0000U, 0x10FFFFU, 0x110000U, 0x1FFFFFU})
        characters.push_back(character);
    return characters;
}

// Returns references, valid and invalid ones.
std::vector<std::string> references()
{
    std::vector<std::string> references;
    for (unsigned number = 0; number <= 0x110010; number += number < 0x100 ? 1 : 0x7F)
        references.push_back("&#" + std::to_string(number) + ";");
    for (const char* const reference :
         {"&amp;",        "&lt;",        "&gt;",         "&quot;",    "&apos;",     "&AMP;",
          "&lt",          "&nbsp;",      "&;",           "&",         "& amp;",     "&amp ;",
          "&#;",          "&#x;",        "&#X41;",       "&#x4g;",    "&# 65;",     "&#65 ;",
          "&#65",         "&#+65;",      "&#-65;",       "&#x41;",    "&#x4E2d;",   "&#xD7FF;",
          "&#xD800;",     "&#xDFFF;",    "&#xE000;",     "&#xFFFD;",  "&#xFFFE;",   "&#xFFFF;",
          "&#x10000;",    "&#x10FFFF;",  "&#x110000;",   "&#x1F600;", "&amp;amp;",  "&#38;lt;",
          "&#4294967361", "&#x10000041", "&amp;&lt;&#9", "a&amp;b",   "&amp;x&y;z", "&&amp;",
          "&#18446744073"})
        references.emplace_back(reference);
    references.push_back("&#" + repeated("0", 10) + "65;");
    references.push_back("&#x" + repeated("0", 9) + "e9;");
    references.push_back(repeated("&amp;x", 1000));
    return references;
}

// Returns the text that libxml2 reads in an element or attribute. Returns nothing after a fault.
std::optional<std::wstring> parse(const std::string& text, text_context_t context)
{
    const xml_error_scope_t errors;
    const std::string document =
        context == text_context_t::element ? "<a>" + text + "</a>" : "<a b=\"" + text + "\"></a>";
    const std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> tree(
        xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, nullptr, 0),
        xmlFreeDoc);
    if (!tree)
        return std::nullopt;
    const xmlNode* const root = xmlDocGetRootElement(tree.get());
    const xml_string_t content(context == text_context_t::element ? xmlNodeGetContent(root)
                                                                  : xmlGetProp(root, to_xml("b")));
    return utf8_to_utf16(from_xml(content.get()));
}

std::optional<std::wstring> decode(const std::string& text, text_context_t context,
                                   const std::string& ampersand = "&")
{
    std::wstring wide = L"former";
    return decode_references(text, context, ampersand, wide) ? std::optional<std::wstring>(wide)
                                                             : std::nullopt;
}

bool is_name_for_libxml2(const std::string& name)
{
    const xml_error_scope_t errors;
    const std::string document = "<" + name + "/>";
    const std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> tree(
        xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, nullptr, 0),
        xmlFreeDoc);
    return tree && from_xml(xmlDocGetRootElement(tree.get())->name) == name;
}

bool is_name(const std::string& name)
{
    std::wstring wide;
    const bool is_decoded = decode_name(name, wide);
    EXPECT_TRUE(!is_decoded || wide == utf8_to_utf16(name)) << name;
    return is_decoded;
}

} // namespace

TEST(references_test, a_text_of_an_element_is_decoded_as_libxml2_does)
{
    for (const unsigned character : characters()) {
        const std::string text = "x" + encoded(character) + "y";
        // A parse changes a carriage return.
        const auto expected =
            character == '\r' ? std::nullopt : parse(text, text_context_t::element);
        ASSERT_EQ(decode(text, text_context_t::element), expected) << character;
    }
}

TEST(references_test, a_value_of_an_attribute_is_decoded_as_libxml2_does)
{
    for (const unsigned character : characters()) {
        const std::string text = "x" + encoded(character) + "y";
        const bool is_changed = character == '\r' || character == '\n' || character == '\t';
        // A quote cannot be in a value, since the scanner ends the value there.
        if (character != '"') {
            ASSERT_EQ(decode(text, text_context_t::attribute),
                      is_changed ? std::nullopt : parse(text, text_context_t::attribute))
                << character;
        }
    }
}

TEST(references_test, a_character_is_decoded_as_libxml2_does_wherever_it_is_in_a_text)
{
    for (const std::size_t size : {7U, 8U, 9U, 17U})
        for (std::size_t position = 0; position != size; ++position)
            for (unsigned character = 1; character != 0x102; ++character) {
                std::string text(size, 'x');
                text.replace(position, 1, encoded(character));
                const bool is_changed = character == '\r';
                const auto expected =
                    is_changed ? std::nullopt : parse(text, text_context_t::element);
                ASSERT_EQ(decode(text, text_context_t::element), expected)
                    << character << " at " << position;
                ASSERT_EQ(is_plain_text(text), expected && character < 0x80);
            }
}

TEST(references_test, the_end_of_a_section_is_found_wherever_it_is_in_a_text)
{
    for (std::size_t position = 0; position != 20; ++position) {
        const std::string text =
            std::string(position, 'x') + "]]>" + std::string(20 - position, 'x');
        EXPECT_EQ(decode(text, text_context_t::element), std::nullopt);
        EXPECT_EQ(find_fault(text), position);
    }
}

TEST(references_test, references_are_decoded_as_libxml2_does)
{
    for (const std::string& text : references())
        for (const text_context_t context : {text_context_t::element, text_context_t::attribute}) {
            ASSERT_EQ(decode(text, context), parse(text, context)) << text.substr(0, 100);
            const std::string mixed = "\xC3\xA9" + text + "\xF0\x9F\x98\x80";
            ASSERT_EQ(decode(mixed, context), parse(mixed, context)) << mixed.substr(0, 100);
        }
}

// libxml2 2.9.14 reads only some of them.
TEST(references_test, a_long_reference_is_left_to_libxml2)
{
    for (const std::size_t zeros : {10U, 11U, 60U, 100000U}) {
        const std::string text = "a&amp;&#x" + repeated("0", zeros) + "e9;b";
        EXPECT_EQ(decode(text, text_context_t::element), std::nullopt);
        EXPECT_EQ(find_fault(text), text.size());
        EXPECT_EQ(find_fault(text + "\x01"), text.size());
    }
}

TEST(references_test, the_end_of_a_section_is_left_to_libxml2)
{
    EXPECT_EQ(decode("a]]>b", text_context_t::element), std::nullopt);
    EXPECT_EQ(decode("a]]>b", text_context_t::attribute), std::nullopt);
    EXPECT_EQ(decode("a]]b>]>", text_context_t::element), L"a]]b>]>");
    EXPECT_EQ(decode("a]]&gt;b", text_context_t::element), L"a]]>b");
}

TEST(references_test, malformed_utf8_is_refused)
{
    for (const char* const text : {"\xFF", "\xC3", "\xC3x", "\x80", "\xC0\x80", "\xE0\x80\x80",
                                   "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80"}) {
        EXPECT_EQ(decode(text, text_context_t::element), std::nullopt);
        EXPECT_EQ(decode(std::string("&amp;") + text, text_context_t::attribute), std::nullopt);
        EXPECT_FALSE(is_name(text));
        EXPECT_FALSE(is_name(std::string("a") + text));
    }
}

TEST(references_test, an_ampersand_becomes_the_text_that_the_caller_passes)
{
    EXPECT_EQ(decode("a&amp;b&#38;c&#x26;d&lt;", text_context_t::attribute, "&#38;"),
              L"a&#38;b&#38;c&#38;d<");
    EXPECT_EQ(decode("&#38;#65;", text_context_t::element, "&"), L"&#65;");
}

TEST(references_test, a_fault_is_found_if_libxml2_finds_one)
{
    std::vector<std::string> texts = references();
    for (unsigned character = 1; character != 0x80; ++character)
        texts.push_back("x" + encoded(character) + "y");
    for (const char* const text : {"", "a]]>b", "]]>", "]]", "]>", "a]]b>", "\r\n", "\xC3\xA9"})
        texts.emplace_back(text);
    for (const std::string& text : texts)
        if (text.find('<') == std::string::npos) {
            ASSERT_EQ(find_fault(text) == text.size(),
                      parse(text, text_context_t::element).has_value())
                << text.substr(0, 100);
        }
}

TEST(references_test, the_first_of_several_faults_is_found)
{
    static const struct
    {
        const char* text;
        std::size_t fault;
    } cases[] = {
        {"ab\x01 &u; ]]>", 2},    {"ab&u; \x01 ]]>", 2}, {"ab]]> &u; \x01", 2}, {"&amp;&u;", 5},
        {"&#65;\r\n]] \x01", 10}, {"a\r\x7F&#0;", 3},    {"&lt;]]>", 4},        {"x&amp;&", 6}};
    for (const auto& [text, fault] : cases)
        EXPECT_EQ(find_fault(text), fault) << text;
}

TEST(references_test, a_plain_text_is_ascii_that_libxml2_leaves_as_it_is)
{
    for (unsigned character = 1; character != 0x100; ++character) {
        const std::string text = "x" + encoded(character) + "y";
        EXPECT_EQ(is_plain_text(text),
                  character < 0x80 && parse(text, text_context_t::element) ==
                                          std::wstring(text.begin(), text.end()))
            << character;
    }
    for (const char* const text : {"", "]]", "]>", "\t\n ", ">>", "\"'"})
        EXPECT_TRUE(is_plain_text(text)) << text;
    for (const char* const text : {"]]>", "a]]>b", "&amp;", "&", "\r\n", "\xC3\xA9"})
        EXPECT_FALSE(is_plain_text(text)) << text;
}

TEST(references_test, a_name_is_decoded_if_libxml2_reads_it_as_one)
{
    for (const unsigned character : characters()) {
        // libxml2 splits a name at its colon.
        if (character == ':')
            continue;
        const std::string utf8 = encoded(character);
        ASSERT_EQ(is_name(utf8 + "a"), is_name_for_libxml2(utf8 + "a")) << character;
        // These characters end the name and begin something else.
        if (!ends_name(utf8.front())) {
            ASSERT_EQ(is_name("a" + utf8 + "b"), is_name_for_libxml2("a" + utf8 + "b"))
                << character;
        }
    }
    EXPECT_FALSE(is_name(""));
    EXPECT_TRUE(is_name(":a:"));
}

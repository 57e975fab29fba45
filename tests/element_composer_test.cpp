#include "encoding/element_composer.h"

#include "random_messages.h"
#include "support.h"
#include "writer_oracle.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace velmoext_1_4_8;
using ROVA_2_18::strings::utf8_to_utf16;

namespace
{

std::string composed_log(const std::vector<message_t>& messages)
{
    text_buffer_t<char> elements;
    for (const message_t& message : messages)
        append_message_element(message, 1, elements);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n" +
           std::string(elements.begin(), elements.end()) + "</log>\n";
}

void expect_as_written(const message_t& message)
{
    ASSERT_EQ(compose_document(message), utf8_to_utf16(written_document(message)));
    ASSERT_EQ(composed_log({message, message}), written_log({message, message}));
}

// All of the BMP, surrogates included, and some values of a wide character beyond it.
std::vector<unsigned> characters()
{
    std::vector<unsigned> characters;
    for (unsigned character = 0; character != 0x10100; ++character)
        characters.push_back(character);
    for (const unsigned character : {0x1F600U, 0x1FFFEU, 0xEFFFFU, 0xF0000U, 0x10FFFFU, 0x110000U,
                                     0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        characters.push_back(character);
    return characters;
}

// Writes the characters in messages of 256, each added to a content by `add`.
template <typename Add>
void expect_characters_as_written(const Add& add)
{
    const std::vector<unsigned> all = characters();
    for (std::size_t at = 0; at < all.size(); at += 256) {
        message_t::message_content_t content;
        for (std::size_t index = at; index != std::min(at + 256, all.size()); ++index)
            add(content, all.at(index));
        const message_ptr_t message = make_message(content);
        ASSERT_EQ(compose_document(*message), utf8_to_utf16(written_document(*message)))
            << all.at(at);
        ASSERT_EQ(composed_log({*message}), written_log({*message})) << all.at(at);
    }
}

} // namespace

TEST(element_composer_test, each_character_of_a_text_is_written_as_libxml2_does)
{
    expect_characters_as_written([](message_t::message_content_t& content, unsigned character) {
        const std::wstring key = L"k" + std::to_wstring(character);
        content.args[key] = units({character});
        content.elements[key] = units({'a', character, 'b', '&', character});
    });
}

TEST(element_composer_test, each_character_of_an_attribute_is_written_as_libxml2_does)
{
    expect_characters_as_written([](message_t::message_content_t& content, unsigned character) {
        const std::wstring key = L"k" + std::to_wstring(character);
        content.attributes[key] = units({'a', character, 'b', '&', character});
    });
}

TEST(element_composer_test, each_character_of_an_arguments_name_is_written_as_libxml2_does)
{
    expect_characters_as_written([](message_t::message_content_t& content, unsigned character) {
        content.args[units({character})] = L"x";
        content.args[units({'a', character, 'b'})] = L"y";
    });
}

TEST(element_composer_test, each_character_of_a_key_is_written_as_libxml2_does)
{
    expect_characters_as_written([](message_t::message_content_t& content, unsigned character) {
        content.attributes[units({'a', character})] = L"x";
        content.elements[units({character, 'b'})] = L"y";
    });
}

TEST(element_composer_test, each_character_of_a_type_is_written_as_libxml2_does)
{
    for (unsigned character = 0; character != 0x110; ++character)
        expect_as_written(*make_message(units({character, 'a', character}), message_t::error));
}

TEST(element_composer_test, a_character_is_written_as_libxml2_does_wherever_it_is_in_a_text)
{
    for (std::size_t position = 0; position != 20; ++position)
        expect_characters_as_written(
            [=](message_t::message_content_t& content, unsigned character) {
                if (character < 0x102 || (character > 0xD7FE && character < 0xE002) ||
                    character > 0xFFFC) {
                    std::wstring text(20, L'x');
                    text[position] = static_cast<wchar_t>(character);
                    content.args[std::to_wstring(character)] = text;
                }
            });
}

TEST(element_composer_test, keys_with_colons_are_written_as_libxml2_does)
{
    for (const wchar_t* const key :
         {L":",     L"a:",    L":a",      L"::",        L"a::",    L"a::b",   L":a:b",
          L":a:1",  L"a:b",   L"a:1",     L"a:b:",      L"a:b:c",  L"a:b:1",  L"a:1:b",
          L"a:1:2", L"a:b:-", L"a:b:c:1", L"a:b:c:d:1", L"xml:id", L"xmlns:a"})
        for (const string_map_t& texts :
             {string_map_t{{key, L"x"}}, string_map_t{{key, L"x"}, {L"z", L"y"}}}) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(key)));
            expect_as_written(*make_message(make_content(texts)));
            expect_as_written(*make_message(make_content({}, {}, texts)));
            expect_as_written(*make_message(make_content({}, texts)));
        }
}

TEST(element_composer_test, an_attribute_with_two_spellings_of_its_name_is_written_once)
{
    const std::wstring pair = units({0xD83D, 0xDE00});
    for (const unsigned character : {0x1F600U, 0x1F601U, 0xFFFDU, 0xD83DU}) {
        const string_map_t texts = {{L"a" + units({character}), L"1"}, {L"a" + pair, L"2"}};
        expect_as_written(*make_message(make_content(texts)));
        expect_as_written(*make_message(make_content({}, texts, texts)));
    }
}

TEST(element_composer_test, an_empty_key_ends_the_content_since_libxml2_refuses_it)
{
    const string_map_t texts = {{L"", L"1"}, {L"a", L"2"}};
    expect_as_written(*make_message(make_content(texts, {{L"b", L"3"}}, {{L"c", L"4"}})));
    expect_as_written(*make_message(make_content({{L"a", L"2"}}, texts, {{L"c", L"4"}})));
    expect_as_written(*make_message(make_content({{L"a", L"2"}}, {{L"b", L"3"}}, texts)));
}

TEST(element_composer_test, severities_are_written_as_libxml2_does)
{
    for (int severity = -1; severity != 6; ++severity)
        expect_as_written(*make_message(L"t", static_cast<message_t::severity_t>(severity)));
}

TEST(element_composer_test, random_messages_are_written_as_libxml2_does)
{
    const random_seeds_t seeds(1000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        SCOPED_TRACE(seed);
        expect_as_written(random_message(random));
        if (HasFatalFailure())
            return;
    }
}

TEST(element_composer_test, an_element_is_appended)
{
    const std::string before = "before";
    text_buffer_t<char> document(before.begin(), before.end());
    append_message_element(*make_message(L"t"), 0, document);
    EXPECT_EQ(std::string(document.begin(), document.end()),
              "before<msg>\n <type>t</type>\n</msg>\n");
}

TEST(element_composer_test, a_text_of_any_size_is_written)
{
    const std::size_t size = 10100000;
    const std::size_t name_size = 60000;
    const message_ptr_t message = make_message(make_content(
        {{L"a", std::wstring(size, L'v')}}, {}, {{std::wstring(name_size, L'e'), L"x"}}));
    EXPECT_TRUE(compose_document(*message) ==
                L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<msg a=\"" +
                    std::wstring(size, L'v') + L"\">\n <" + std::wstring(name_size, L'e') +
                    L">x</" + std::wstring(name_size, L'e') + L">\n <type></type>\n</msg>\n");
}

#include "path_text.h"

#include "library_names.h"

#include <rova/strings.h>
#include <velmoext1/message.h>
#include <velmoext1/string_message_serializer.h>

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <set>
#include <string>

namespace audit
{
namespace
{

struct case_t
{
    std::string path;
    std::string text; ///< in UTF-8
    bool is_printable;
};

const case_t cases[] = {
    {"", "", true},
    {"/usr/share/doc", "/usr/share/doc", true},
    {"two words", "two words", true},
    {R"(back\slash)", R"(back\\slash)", true},
    {R"(\x41)", R"(\\x41)", true},
    {"b\xc3\xa4r", "b\xc3\xa4r", true},
    {"\xe2\x82\xac", "\xe2\x82\xac", true},
    {"\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80", true},
    {"\xef\xbf\xbd", "\xef\xbf\xbd", true},
    {"\xc2\xa0", "\xc2\xa0", true},
    {"a\nb", R"(a\x0ab)", false},
    {"\x1b[31m", R"(\x1b[31m)", false},
    {"\x7f", R"(\x7f)", false},
    {"\xc2\x9b", R"(\xc2\x9b)", false},
    {"\xef\xbf\xbe", R"(\xef\xbf\xbe)", false},
    {"\xef\xbf\xbf", R"(\xef\xbf\xbf)", false},
    {"\xff", R"(\xff)", false},
    {"\x80", R"(\x80)", false},
    {"caf\xe9 noir", R"(caf\xe9 noir)", false},
    {"\xc0\xaf", R"(\xc0\xaf)", false},
    {"\xc3", R"(\xc3)", false},
    {"\xe2\x82", R"(\xe2\x82)", false},
    {"\xe2\x82z", R"(\xe2\x82z)", false},
    {"\xed\xa0\x80", R"(\xed\xa0\x80)", false},
    {"\xf4\x90\x80\x80", R"(\xf4\x90\x80\x80)", false},
    {"\xff\xc3\xa4", "\\xff\xc3\xa4", false},
};

std::wstring sent_and_received(const std::wstring& text)
{
    velmoext::message_t::message_content_t content;
    content.args[L"path"] = text;
    const auto message = boost::make_shared<velmoext::message_t>();
    message->set_content(content);
    typedef velmoext::string_message_serializer_t serializer_t;
    const auto received =
        serializer_t::xml_string_to_message(serializer_t::message_to_xml_string(message));
    return received ? received->get_content().args[L"path"] : std::wstring();
}

TEST(path_text_test, readable_characters_stay_and_all_other_bytes_are_escaped)
{
    for (const case_t& given : cases)
        EXPECT_EQ(rova::strings::utf16_to_utf8(path_text(given.path)), given.text);
}

TEST(path_text_test, a_name_is_printable_if_no_byte_is_escaped)
{
    for (const case_t& given : cases)
        EXPECT_EQ(is_printable(given.path), given.is_printable) << given.text;
}

TEST(path_text_test, a_character_beyond_the_bmp_becomes_a_surrogate_pair)
{
    EXPECT_EQ(path_text("\xf0\x9f\x98\x80"), (std::wstring{wchar_t{0xD83D}, wchar_t{0xDE00}}));
}

TEST(path_text_test, two_paths_never_have_the_same_text)
{
    std::set<std::wstring> texts;
    for (unsigned pair = 0; pair <= 0xFFFF; ++pair) {
        const std::string path = {static_cast<char>(pair >> 8U), static_cast<char>(pair & 0xFFU)};
        EXPECT_TRUE(texts.insert(path_text(path)).second) << pair;
    }
}

TEST(path_text_test, a_message_carries_every_text_unchanged)
{
    for (const case_t& given : cases) {
        const std::wstring text = path_text(given.path);
        EXPECT_EQ(sent_and_received(text), text) << given.text;
    }
}

} // namespace
} // namespace audit

#include "terminal_text.h"

#include <gtest/gtest.h>

#include <string>

namespace audit
{
namespace
{

struct case_t
{
    std::wstring text;
    std::string shown;
};

TEST(terminal_text_test, only_characters_unsafe_on_a_terminal_are_escaped)
{
    const case_t cases[] = {
        {L"", ""},
        {LR"(plain text, \ and ' and all)", R"(plain text, \ and ' and all)"},
        {L"\xE4\x20AC", "\xc3\xa4\xe2\x82\xac"},
        {{wchar_t{0xD83D}, wchar_t{0xDE00}}, "\xf0\x9f\x98\x80"},
        {L"\x1b[31mred", R"(\x1b[31mred)"},
        {L"two\nlines\r\n", R"(two\x0alines\x0d\x0a)"},
        {L"\t\a\b\x7f", R"(\x09\x07\x08\x7f)"},
        {std::wstring(1, L'\0'), R"(\x00)"},
        {L"\x80\x9b\x9f", R"(\xc2\x80\xc2\x9b\xc2\x9f)"},
        {L"\x202E"
         L"gpj.exe",
         R"(\xe2\x80\xaegpj.exe)"},
        {L"\x61C\x200E\x200F", R"(\xd8\x9c\xe2\x80\x8e\xe2\x80\x8f)"},
        {L"\x2066\x2069", R"(\xe2\x81\xa6\xe2\x81\xa9)"},
        {L"\x2028\x2029", R"(\xe2\x80\xa8\xe2\x80\xa9)"},
        {{L'a', wchar_t{0xD800}, L'b'},
         "a\xef\xbf\xbd"
         "b"},
    };
    for (const case_t& given : cases)
        EXPECT_EQ(terminal_text(given.text), given.shown);
}

TEST(terminal_text_test, no_single_element_produces_a_control_byte)
{
    for (wchar_t element = 0; element < 0x3000; ++element)
        for (const char byte : terminal_text(std::wstring(1, element))) {
            EXPECT_GE(static_cast<unsigned char>(byte), ' ') << static_cast<long>(element);
            EXPECT_NE(byte, '\x7f') << static_cast<long>(element);
        }
}

} // namespace
} // namespace audit

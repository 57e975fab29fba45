#include "plain_line.h"

#include "library_names.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace audit
{
namespace
{

using velmoext::message_t;
typedef std::map<std::wstring, std::wstring> args_t;

message_t make(message_t::severity_t severity, const std::wstring& type, const args_t& args)
{
    message_t::message_content_t content;
    content.args = args;
    message_t message;
    message.set_severity(severity);
    message.set_type(type);
    message.set_content(content);
    message.set_source(L"here");
    return message;
}

std::string line_of(const args_t& args)
{
    return plain_line(make(message_t::info, L"type", args));
}

TEST(plain_line_test, a_message_has_severity_type_source_and_arguments)
{
    EXPECT_EQ(
        plain_line(make(message_t::error, L"file_lost", {{L"path", L"/a"}, {L"count", L"3"}})),
        "error file_lost here count=3 path=/a");
}

TEST(plain_line_test, each_severity_is_shown_by_name_and_any_other_as_a_number)
{
    std::vector<std::string> lines;
    for (const int severity : {0, 1, 2, 3, 4, -7})
        lines.push_back(plain_line(make(static_cast<message_t::severity_t>(severity), L"t", {})));
    EXPECT_EQ(lines, (std::vector<std::string>{"0 t here", "info t here", "warning t here",
                                               "error t here", "critical t here", "-7 t here"}));
}

TEST(plain_line_test, an_empty_message_is_a_line_of_empty_fields)
{
    EXPECT_EQ(plain_line(message_t()), "0 \"\" \"\"");
}

TEST(plain_line_test, empty_fields_and_fields_with_separators_are_quoted)
{
    EXPECT_EQ(line_of({{L"a", L"b c"}}), "info type here a=\"b c\"");
    EXPECT_EQ(line_of({{L"a", L""}}), "info type here a=\"\"");
    EXPECT_EQ(line_of({{L"a=b", L"c=d"}}), "info type here \"a=b\"=\"c=d\"");
    EXPECT_EQ(line_of({{L"a b", L"c"}}), "info type here \"a b\"=c");
}

TEST(plain_line_test, a_value_cannot_end_its_quotation_marks)
{
    EXPECT_EQ(line_of({{L"a", L"x\" b=\"y"}}), R"(info type here a="x\x22 b=\x22y")");
}

TEST(plain_line_test, no_part_of_a_message_reaches_the_terminal_raw)
{
    message_t message = make(message_t::info, L"t\x1b]0;x\a", {{L"n\n", L"v\x9b\x202E"}});
    message_t::message_content_t content = message.get_content();
    content.attributes[L"source"] = L"s\r";
    message.set_content(content);
    EXPECT_EQ(plain_line(message), R"(info t\x1b]0;x\x07 s\x0d n\x0a=v\xc2\x9b\xe2\x80\xae)");
}

TEST(plain_line_test, text_is_shown_in_utf8)
{
    EXPECT_EQ(line_of({{L"a", {wchar_t{0xE4}, wchar_t{0xD83D}, wchar_t{0xDE00}}}}),
              "info type here a=\xc3\xa4\xf0\x9f\x98\x80");
}

} // namespace
} // namespace audit

#include <rova/i18n.h>

#include "usage.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

typedef std::vector<std::pair<std::string, std::wstring>> named_values_t;

std::wstring format(const std::wstring& pattern, const named_values_t& values)
{
    ROVA_2_18::generic::varg_list arguments;
    for (const auto& [name, value] : values)
        arguments.push_back({name, value});
    return ROVA_2_18::i18n::message_t(pattern, "en").as_ustring(arguments);
}

TEST(rova_placeholder_names_test, a_name_with_punctuation_is_filled)
{
    for (const std::string name :
         {"file-name", "file.size", "a/b", "a:b", "#1", "a=b", "?", "$x", "@"})
        EXPECT_EQ(format(L"<{" + std::wstring(name.begin(), name.end()) + L"}>", {{name, L"v"}}),
                  L"<v>")
            << name;
}

TEST(rova_placeholder_names_test, a_name_with_blanks_is_filled_without_those_around_it)
{
    EXPECT_EQ(format(L"{ the file }", {{"the file", L"v"}}), L"v");
    EXPECT_EQ(format(L"{ the file , number}", {{"the file", L"1234"}}), L"1,234");
}

TEST(rova_placeholder_names_test, a_number_with_leading_zeros_is_a_name)
{
    EXPECT_EQ(format(L"{007} {7}", {{"007", L"bond"}, {"7", L"seven"}}), L"bond seven");
    EXPECT_EQ(format(L"{99999999999}", {{"99999999999", L"v"}}), L"v");
}

TEST(rova_placeholder_names_test, a_name_with_punctuation_can_have_any_type)
{
    EXPECT_EQ(format(L"{n-n, plural, one{one} other{# and {n-n}}}", {{"n-n", L"2"}}), L"2 and 2");
    EXPECT_EQ(format(L"{n-n, selectordinal, one{#st} other{#th}}", {{"n-n", L"1"}}), L"1st");
    EXPECT_EQ(format(L"{n-n, select, a{A} other{other}}", {{"n-n", L"a"}}), L"A");
    EXPECT_EQ(format(L"{n-n, choice, 0#none|1#one {m-m}}", {{"n-n", L"1"}, {"m-m", L"v"}}),
              L"one v");
    EXPECT_EQ(format(L"{n-n, number, percent}", {{"n-n", L"0.5"}}), L"50%");
    EXPECT_EQ(format(L"{n-n, date,yyyy-MM-dd}", {{"n-n", L"0"}}), L"1970-01-01");
}

TEST(rova_placeholder_names_test, a_missing_argument_leaves_the_name_of_the_pattern)
{
    EXPECT_EQ(format(L"a {file-name} b", {}), L"a {file-name} b");
    EXPECT_EQ(format(L"{file-size, number}", {}), L"{file-size}");
    EXPECT_EQ(format(L"{file-size, number}", {{"file-size", L"many"}}), L"{file-size}");
    EXPECT_EQ(format(L"{n-n, plural, other{{f-f}}}", {{"n-n", L"1"}}), L"{f-f}");
    EXPECT_EQ(format(L"{n-n} {n-n, number} {n-n, select, other{}}", {}), L"{n-n} {n-n} {n-n}");
}

TEST(rova_placeholder_names_test, names_with_punctuation_are_found_beside_others)
{
    EXPECT_EQ(format(L"{a-a}{b}{a-a}{a.a}", {{"a-a", L"1"}, {"b", L"2"}, {"a.a", L"3"}}), L"1213");
}

TEST(rova_placeholder_names_test, a_quoted_brace_does_not_begin_a_name)
{
    EXPECT_EQ(format(L"'{a-a}' {a-a}", {{"a-a", L"v"}}), L"{a-a} v");
    EXPECT_EQ(format(L"it''s {a-a}, it's '{'{a-a}", {{"a-a", L"v"}}), L"it's v, it's {v");
    EXPECT_EQ(format(L"'{it''s {a-a}' {a-a}", {{"a-a", L"v"}}), L"{it's {a-a} v");
    EXPECT_EQ(format(L"{n, plural, other{'#' {a-a} '{a-a}'}}", {{"n", L"1"}, {"a-a", L"v"}}),
              L"# v {a-a}");
    EXPECT_EQ(format(L"{n, choice, 0#'|' {a-a}}", {{"n", L"1"}, {"a-a", L"v"}}), L"| v");
    EXPECT_EQ(format(L"{n, number,0 '{a-a}'} {a-a}", {{"n", L"1"}, {"a-a", L"v"}}), L"1 {a-a} v");
}

TEST(rova_placeholder_names_test, a_pattern_that_is_malformed_elsewhere_stays_as_it_is)
{
    for (const std::wstring pattern :
         {L"{a-a", L"{a-a}{", L"{a-a,", L"{a-a, plural, one{x}}", L"{a-a, {b}}", L"{a'a}", L"{,}",
          L"{a-a, plural, other{", L"{-}}{", L"{a-a, number, '"})
        EXPECT_EQ(format(pattern, {{"a-a", L"v"}}), pattern);
}

TEST(rova_placeholder_names_test, names_for_private_use_do_not_collide)
{
    EXPECT_EQ(format(L"{\xE001"
                     L"1} {a-a}",
                     {{"\xEE\x80\x81"
                       "1",
                       L"p"},
                      {"a-a", L"v"}}),
              L"p v");
    EXPECT_EQ(format(L"{a-a, number} {\xE001"
                     L"1}",
                     {{"\xEE\x80\x81"
                       "1",
                       L"p"},
                      {"a-a", L"1"}}),
              L"1 p");
}

TEST(rova_placeholder_names_test, many_missing_arguments_and_a_long_text_take_linear_time)
{
    std::wstring pattern = L"{x}{n,number}";
    for (int i = 0; i < 9000; ++i)
        pattern += L"{a-b}";
    const velmoext_1_4_8::usage_t usage;
    EXPECT_EQ(format(pattern, {{"x", std::wstring(10000000, L'y')}}).substr(10000000, 8),
              L"{n}{a-b}");
    EXPECT_LT(usage.seconds(), 5);
}

TEST(rova_placeholder_names_test, a_text_for_private_use_is_inserted_unchanged)
{
    EXPECT_EQ(format(L"{x} {a-b} {n, number}", {{"x", L"{\xE001"
                                                      L"1}"},
                                                {"n", L"1"}}),
              L"{\xE001"
              L"1} {a-b} 1");
}

TEST(rova_placeholder_names_test, a_pattern_with_all_prefixes_stays_as_it_is)
{
    std::wstring pattern = L"{a-a}";
    for (wchar_t prefix = 0xE001; prefix != 0xE010; ++prefix)
        pattern += prefix;
    EXPECT_EQ(format(pattern, {{"a-a", L"v"}}), L"v" + pattern.substr(5));
    pattern += L'\xE010';
    EXPECT_EQ(format(pattern, {{"a-a", L"v"}}), pattern);
}

} // namespace

#include <rova/i18n.h>

#include <rova/strings.h>

#include "run_threads.h"
#include "usage.h"

#include <gtest/gtest.h>

#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>
#include <unicode/unistr.h>

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

using ROVA_2_18::generic::argument;
using ROVA_2_18::generic::varg_list;
using ROVA_2_18::i18n::catalog_t;
using ROVA_2_18::i18n::message_t;
using ROVA_2_18::strings::ustring16;
using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;
using velmoext_1_4_8::usage_t;
using namespace std::string_literals;

typedef std::vector<std::pair<std::string, std::wstring>> arguments_t;

// ThreadSanitizer uses nearly 1 MiB of the stack.
#ifdef __SANITIZE_THREAD__
constexpr std::size_t small_stack = std::size_t{1280} * 1024;
#else
constexpr std::size_t small_stack = std::size_t{256} * 1024;
#endif

struct row_t
{
    std::wstring pattern;
    arguments_t arguments;
    std::wstring text;
};

varg_list list_of(const arguments_t& arguments)
{
    varg_list list;
    for (const auto& one : arguments)
        list.push_back(argument(one.first, one.second));
    return list;
}

// Returns the result of ICU. A pattern that ICU refuses is returned unchanged.
std::wstring format_by_icu(const std::wstring& pattern, const arguments_t& arguments)
{
    std::vector<icu::UnicodeString> names;
    std::vector<icu::Formattable> values;
    for (const auto& [name, value] : arguments) {
        names.push_back(icu::UnicodeString::fromUTF8(name));
        values.emplace_back(icu::UnicodeString::fromUTF8(utf16_to_utf8(value)));
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::MessageFormat format(icu::UnicodeString::fromUTF8(utf16_to_utf8(pattern)),
                                    icu::Locale("en"), status);
    icu::UnicodeString formatted;
    format.format(names.data(), values.data(), static_cast<std::int32_t>(names.size()), formatted,
                  status);
    std::string utf8;
    return U_FAILURE(status) ? pattern : utf8_to_utf16(formatted.toUTF8String(utf8));
}

std::wstring format(const std::wstring& pattern, const arguments_t& arguments = {},
                    const std::string& locale = "en")
{
    return message_t(pattern, locale).as_ustring(list_of(arguments));
}

template <std::size_t Count>
void expect_rows(const row_t (&rows)[Count], const std::string& locale = "en")
{
    for (const auto& row : rows) {
        EXPECT_EQ(format(row.pattern, row.arguments, locale), row.text)
            << testing::PrintToString(row.pattern) << testing::PrintToString(row.arguments);
    }
}

template <std::size_t Count>
void expect_unformatted(const std::wstring (&patterns)[Count], const arguments_t& arguments)
{
    for (const auto& pattern : patterns)
        EXPECT_EQ(format(pattern, arguments), pattern) << testing::PrintToString(pattern);
}

std::wstring element(std::int64_t value)
{
    return {static_cast<wchar_t>(value)};
}

std::wstring repeat(const std::wstring& text, std::size_t count)
{
    std::wstring result;
    for (std::size_t i = 0; i != count; ++i)
        result += text;
    return result;
}

/// Returns nested plurals.
std::wstring nested(std::size_t depth)
{
    return repeat(L"{n,plural,other{", depth) + L"x" + repeat(L"}}", depth);
}

/// Returns nested choices, without braces around the texts.
std::wstring nested_choice(std::size_t depth)
{
    return repeat(L"{n,choice,0#", depth) + L"{n}" + repeat(L"}", depth);
}

/// Returns that many names, each with a placeholder, and as many texts.
row_t many_names(std::size_t count)
{
    row_t row;
    for (std::size_t i = 0; i != count; ++i) {
        row.pattern += L"{n" + std::to_wstring(i) + L"}";
        row.arguments.emplace_back("n" + std::to_string(i), std::to_wstring(i));
        row.text += std::to_wstring(i);
    }
    return row;
}

/// Runs the step on a thread with a small stack, as a host may have.
void run_on_small_stack(void (*step)())
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, small_stack), 0);
    pthread_t thread = {};
    const auto run = [](void* given) -> void* {
        (*static_cast<void (**)()>(given))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &step), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

/// An environment variable while in scope.
class environment_t
{
public:
    environment_t(const char* name, const char* value) : m_name(name)
    {
        const char* const former = std::getenv(name);
        m_was_set = former != nullptr;
        m_former = m_was_set ? former : "";
        setenv(name, value, 1);
    }
    environment_t(const environment_t&) = delete;
    environment_t& operator=(const environment_t&) = delete;
    ~environment_t()
    {
        if (m_was_set)
            setenv(m_name, m_former.c_str(), 1);
        else
            unsetenv(m_name);
    }

private:
    const char* m_name;
    bool m_was_set = false;
    std::string m_former;
};

/// Uses a new process, since ICU sets its default locale and time zone once. ICU reads them from
/// the environment, for any locales that the machine has.
void expect_in_new_process(const row_t& row, const std::string& locale)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto use = [&] {
        std::setlocale(LC_ALL, "de_DE.UTF-8");
        std::exit(format(row.pattern, row.arguments, locale) == row.text ? 0 : 1);
    };
    EXPECT_EXIT(use(), testing::ExitedWithCode(0), "")
        << locale << testing::PrintToString(row.pattern);
}

void expect_in_german_process(const row_t& row, const std::string& locale)
{
    const environment_t german("LC_ALL", "de_DE.UTF-8");
    expect_in_new_process(row, locale);
}

void expect_in_tokyo(const row_t& row, const std::string& locale = "en")
{
    const environment_t tokyo("TZ", "Asia/Tokyo");
    expect_in_new_process(row, locale);
}

/// Compares without printing, since such texts are long.
bool is_returned_unchanged(const std::wstring& pattern, const arguments_t& arguments)
{
    return format(pattern, arguments) == pattern;
}

TEST(rova_i18n_test, a_default_message_is_an_empty_text)
{
    EXPECT_EQ(message_t().as_ustring(list_of({{"n", L"1"}})), L"");
}

TEST(rova_i18n_test, an_empty_pattern_is_an_empty_text)
{
    EXPECT_EQ(format(L""), L"");
}

TEST(rova_i18n_test, a_pattern_without_placeholders_is_its_text)
{
    const row_t rows[] = {
        {L"plain", {{"plain", L"x"}}, L"plain"},
        {L"a # b | c, d", {}, L"a # b | c, d"},
        {L"}", {}, L"}"},
        {L"a\0b"s, {}, L"a\0b"s},
        {L"Stra\xDF\x65 \x6F22", {}, L"Stra\xDF\x65 \x6F22"},
        {L"\xD83D\xDE00", {}, L"\xD83D\xDE00"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_placeholder_is_filled_with_the_argument_of_its_name)
{
    const row_t rows[] = {
        {L"{path}", {{"path", L"/tmp"}}, L"/tmp"},
        {L"in {path}: {code}", {{"code", L"5"}, {"path", L"/tmp"}}, L"in /tmp: 5"},
        {L"{ path } {path}", {{"path", L"x"}}, L"x x"},
        {L"{path}", {{"Path", L"no"}, {"path", L"yes"}}, L"yes"},
        {L"{path}", {{"path", L""}}, L""},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_numbered_placeholder_is_filled_with_the_argument_of_that_name)
{
    const row_t rows[] = {
        {L"{0}, {1}", {{"1", L"b"}, {"0", L"a"}}, L"a, b"},
        {L"{1} {name} {0}", {{"name", L"n"}, {"0", L"a"}}, L"{1} n a"},
        {L"{0} {0, plural, one{# x} other{# xs}}", {{"0", L"01"}}, L"01 1 x"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, an_argument_is_inserted_unchanged)
{
    for (const auto& text : {L"007"s, L"1e6"s, L"-0"s, L" 5 "s, L"{n}"s, L"it's '{'"s, L"#"s,
                             L"a\0b\0"s, L"\xE9\x20AC"s, L"\xD83D\xDE00"s})
        EXPECT_EQ(format(L"<{n}>", {{"n", text}}), L"<" + text + L">");
}

TEST(rova_i18n_test, an_argument_that_the_pattern_does_not_use_changes_nothing)
{
    EXPECT_EQ(format(L"{a}", {{"b", L"1"}, {"", L"2"}, {"a", L"3"}, {"a\0"s, L"4"}}), L"3");
}

TEST(rova_i18n_test, arguments_may_be_given_in_any_order)
{
    arguments_t arguments = {{"a", L"1"}, {"b", L"2"}, {"c", L"3"}, {"d", L"4"}};
    do
        EXPECT_EQ(format(L"{d}{a}{c}", arguments), L"413") << testing::PrintToString(arguments);
    while (std::next_permutation(arguments.begin(), arguments.end()));
}

TEST(rova_i18n_test, the_first_of_several_arguments_of_one_name_counts)
{
    EXPECT_EQ(format(L"{n}", {{"n", L"first"}, {"n", L"second"}}), L"first");
    EXPECT_EQ(format(L"{n, number}", {{"n", L"none"}, {"n", L"2"}}), L"{n}");
}

TEST(rova_i18n_test, a_missing_argument_leaves_its_name_in_braces)
{
    const row_t rows[] = {
        {L"a {n} b", {}, L"a {n} b"},
        {L"{ n }", {}, L"{n}"},
        {L"{0}", {}, L"{0}"},
        {L"{\xE9\xD83D\xDE00}", {}, L"{\xE9\xD83D\xDE00}"},
        {L"{n, number} {m}", {{"m", L"x"}}, L"{n} x"},
        {L"{n, plural, one{one} other{many}}", {}, L"{n}"},
        {L"{n, selectordinal, one{#st} other{#th}}", {}, L"{n}"},
        {L"{n, choice, 0#none|1#some}", {}, L"{n}"},
        {L"{n, select, a{x} other{y}}", {}, L"{n}"},
        {L"{n, date}", {}, L"{n}"},
        {L"{n} of {n, plural, one{one} other{many}}", {}, L"{n} of {n}"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_text_that_is_not_a_number_leaves_its_name_if_a_number_is_required)
{
    for (const auto& text :
         {L""s,     L"x"s,   L" 1"s,     L"1 "s,       L"+1"s,    L"1,5"s,   L"0x10"s, L"inf"s,
          L"-inf"s, L"nan"s, L"nan(1)"s, L"infinity"s, L"1e"s,    L"1e400"s, L"-"s,    L"."s,
          L"1\0"s,  L"1\n"s, L"\x661"s,  L"1-"s,       L"1.2.3"s, L"\xD800"s}) {
        EXPECT_EQ(format(L"{n, number}", {{"n", text}}), L"{n}") << testing::PrintToString(text);
        EXPECT_EQ(format(L"{n, plural, other{x}}", {{"n", text}}), L"{n}");
        EXPECT_EQ(format(L"{n} {n, choice, 0#x}", {{"n", text}}), text + L" {n}");
    }
}

TEST(rova_i18n_test, a_decimal_number_is_read_if_a_number_is_required)
{
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"0", L"0"},
        {L"-0", L"0"},
        {L"007", L"7"},
        {L"-12", L"-12"},
        {L"0.5", L"0.5"},
        {L"-0.25", L"-0.25"},
        {L"1e6", L"1,000,000"},
        {L"1E+3", L"1,000"},
        {L"25e-1", L"2.5"},
        {L"9007199254740993", L"9,007,199,254,740,993"},
        {L"9223372036854775807", L"9,223,372,036,854,775,807"},
        {L"-9223372036854775808", L"-9,223,372,036,854,775,808"},
        {L"1e300", L"1" + repeat(L",000", 100)},
    };
    for (const auto& row : rows)
        EXPECT_EQ(format(L"{n, number}", {{"n", row.first}}), row.second) << row.first;
}

TEST(rova_i18n_test, a_long_number_keeps_its_digits)
{
    const std::wstring digits(100, L'9');
    const row_t rows[] = {
        {L"{n, number}", {{"n", L"9223372036854775808"}}, L"9,223,372,036,854,775,808"},
        {L"{n, number}", {{"n", L"18446744073709551615"}}, L"18,446,744,073,709,551,615"},
        {L"{n, number}", {{"n", L"-98765432109876543210"}}, L"-98,765,432,109,876,543,210"},
        {L"{n, number}", {{"n", L"12345678901234567.25"}}, L"12,345,678,901,234,567.25"},
        {L"{n, number,0.0###################}",
         {{"n", L"0.1234567890123456789"}},
         L"0.1234567890123456789"},
        {L"{n, number,0}", {{"n", digits}}, digits},
        {L"{n, number,0}", {{"n", digits + L"9"}}, L"1" + std::wstring(101, L'0')},
        {L"{n, plural, one{#} other{# files}}",
         {{"n", L"18446744073709551615"}},
         L"18,446,744,073,709,551,615 files"},
        {L"{n, choice, 0#none|1#some}", {{"n", L"18446744073709551615"}}, L"some"},
        {L"{n} {n, number}",
         {{"n", L"012345678901234567.250"}},
         L"012345678901234567.250 12,345,678,901,234,567.25"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_long_malformed_number_leaves_its_name)
{
    for (const auto& text :
         {L"+18446744073709551615"s, L"1844674407370955161x"s, L"18446744073709551615 "s,
          L"1844.6744073.709551615"s, L"--18446744073709551615"s, L"18,446,744,073,709,551"s})
        EXPECT_EQ(format(L"{n, number}", {{"n", text}}), L"{n}") << testing::PrintToString(text);
}

TEST(rova_i18n_test, zeros_after_the_decimal_point_do_not_change_the_plural)
{
    const std::wstring pattern = L"{n, plural, =0{none} one{# file} other{# files}}";
    const row_t rows[] = {
        {pattern, {{"n", L"1.0"}}, L"1 file"},
        {pattern, {{"n", L"1.5"}}, L"1.5 files"},
        {pattern, {{"n", L"1.00000000000000000000"}}, L"1 file"},
        {pattern, {{"n", L"1.50000000000000000000"}}, L"1.5 files"},
        {pattern, {{"n", L"0.00000000000000000000"}}, L"none"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_large_number_is_formatted_quickly)
{
    const usage_t usage;
    for (const auto& type : {L"number", L"spellout", L"ordinal", L"duration", L"date", L"time"})
        EXPECT_NE(format(L"{n, "s + type + L"}", {{"n", L"1e308"}}), L"{n}") << type;
    EXPECT_NE(format(L"{n, plural, other{#}}", {{"n", L"1e308"}}), L"{n}");
    EXPECT_NE(format(L"{n, number}", {{"n", L"1e308"}}), L"{n}");
    EXPECT_EQ(format(L"{n, number}", {{"n", std::wstring(1000000, L'9')}}), L"{n}");
    EXPECT_LT(usage.seconds(), 5);
}

TEST(rova_i18n_test, the_plural_forms_of_english_are_used)
{
    const std::wstring pattern = L"{n, plural, =0{no files} one{# file} other{# files}}";
    const row_t rows[] = {
        {pattern, {{"n", L"0"}}, L"no files"},    {pattern, {{"n", L"1"}}, L"1 file"},
        {pattern, {{"n", L"2"}}, L"2 files"},     {pattern, {{"n", L"1234"}}, L"1,234 files"},
        {pattern, {{"n", L"1.5"}}, L"1.5 files"}, {pattern, {{"n", L"1e0"}}, L"1 file"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, the_plural_forms_of_polish_are_used)
{
    const std::wstring pattern =
        L"{n, plural, one{# plik} few{# pliki} many{# plik\xF3w} other{# pliku}}";
    const row_t rows[] = {
        {pattern, {{"n", L"1"}}, L"1 plik"},        {pattern, {{"n", L"2"}}, L"2 pliki"},
        {pattern, {{"n", L"5"}}, L"5 plik\xF3w"},   {pattern, {{"n", L"22"}}, L"22 pliki"},
        {pattern, {{"n", L"12"}}, L"12 plik\xF3w"}, {pattern, {{"n", L"1.5"}}, L"1,5 pliku"},
    };
    expect_rows(rows, "pl");
}

TEST(rova_i18n_test, the_plural_forms_of_arabic_are_used)
{
    const std::wstring pattern = L"{n, plural, zero{z} one{o} two{t} few{f} many{m} other{x}}";
    const row_t rows[] = {
        {pattern, {{"n", L"0"}}, L"z"},  {pattern, {{"n", L"1"}}, L"o"},
        {pattern, {{"n", L"2"}}, L"t"},  {pattern, {{"n", L"3"}}, L"f"},
        {pattern, {{"n", L"11"}}, L"m"}, {pattern, {{"n", L"100"}}, L"x"},
    };
    expect_rows(rows, "ar");
}

TEST(rova_i18n_test, a_plural_may_have_an_offset)
{
    const std::wstring pattern =
        L"{n, plural, offset:1 =1{{who}} one{{who} and # other} other{{who} and # others}}";
    const row_t rows[] = {
        {pattern, {{"n", L"1"}, {"who", L"A"}}, L"A"},
        {pattern, {{"n", L"2"}, {"who", L"A"}}, L"A and 1 other"},
        {pattern, {{"n", L"3"}, {"who", L"A"}}, L"A and 2 others"},
        {L"{n, plural, offset:1 other{# {n}}}", {{"n", L"03"}}, L"2 03"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, the_ordinal_forms_of_english_are_used)
{
    const std::wstring pattern = L"{n, selectordinal, one{#st} two{#nd} few{#rd} other{#th}}";
    const row_t rows[] = {
        {pattern, {{"n", L"1"}}, L"1st"},     {pattern, {{"n", L"22"}}, L"22nd"},
        {pattern, {{"n", L"3"}}, L"3rd"},     {pattern, {{"n", L"11"}}, L"11th"},
        {pattern, {{"n", L"101"}}, L"101st"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_choice_takes_the_last_limit_that_the_number_reaches)
{
    const std::wstring pattern = L"{n, choice, 0#none|1#one|1<many, {n}}";
    const row_t rows[] = {
        {pattern, {{"n", L"-5"}}, L"none"},       {pattern, {{"n", L"0.5"}}, L"none"},
        {pattern, {{"n", L"1"}}, L"one"},         {pattern, {{"n", L"007"}}, L"many, 007"},
        {pattern, {{"n", L"1.1"}}, L"many, 1.1"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_select_takes_the_branch_that_the_text_names)
{
    const std::wstring pattern = L"{g, select, f{she} m{he} 1{one} other{they}}";
    const row_t rows[] = {
        {pattern, {{"g", L"f"}}, L"she"}, {pattern, {{"g", L"m"}}, L"he"},
        {pattern, {{"g", L"1"}}, L"one"}, {pattern, {{"g", L"F"}}, L"they"},
        {pattern, {{"g", L""}}, L"they"}, {pattern, {{"g", L"other"}}, L"they"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, typed_arguments_are_formatted_by_their_type)
{
    const row_t rows[] = {
        {L"{n, number, integer}", {{"n", L"1234.5"}}, L"1,234"},
        {L"{n, number, percent}", {{"n", L"0.5"}}, L"50%"},
        {L"{n, number,#.00}", {{"n", L"7"}}, L"7.00"},
        {L"{n, number, ::compact-short}", {{"n", L"12000"}}, L"12K"},
        {L"{n, spellout}", {{"n", L"21"}}, L"twenty-one"},
        {L"{n, ordinal}", {{"n", L"21"}}, L"21st"},
        {L"{n, duration}", {{"n", L"61"}}, L"1:01"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_date_is_read_as_milliseconds)
{
    const std::wstring day = std::to_wstring(std::int64_t{86400} * 1000 * 366);
    const row_t rows[] = {
        {L"{d, date,yyyy}", {{"d", L"15e9"}}, L"1970"},
        {L"{d, date,yyyy}", {{"d", day}}, L"1971"},
        {L"{d, date,yyyy} {d, number} {d}", {{"d", day}}, L"1971 31,622,400,000 " + day},
        {L"{d, date}", {{"d", L"today"}}, L"{d}"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_date_may_have_many_digits)
{
    const row_t rows[] = {
        {L"{d, date,yyyy}", {{"d", L"15000000000.00000000"}}, L"1970"},
        {L"{d, date,yyyy HH:mm:ss.SSS}", {{"d", L"1500000000000.2500000"}}, L"2017 02:40:00.000"},
        {L"{d, date,yyyy}", {{"d", L"15000000000.0000000000000000001"}}, L"1970"},
        {L"{d, date,u}", {{"d", L"9007199254740992"}}, L"287396"},
        {L"{d, date,u}", {{"d", L"-9007199254740992"}}, L"-283451"},
    };
    expect_rows(rows);
    EXPECT_NE(format(L"{d, date,yyyy}", {{"d", L"18446744073709551615"}}), L"{d}");
}

TEST(rova_i18n_test, a_date_is_formatted_in_gmt)
{
    const row_t rows[] = {
        {L"{d, date,dd HH:mm z}", {{"d", L"0"}}, L"01 00:00 GMT"},
        {L"{d, time,HH:mm}", {{"d", L"0"}}, L"00:00"},
        {L"{d, date,yyyy-MM-dd} {d, time,HH:mm}", {{"d", L"-1"}}, L"1969-12-31 23:59"},
        {L"{n, plural, other{{d, time,HH:mm z}}}", {{"d", L"0"}, {"n", L"1"}}, L"00:00 GMT"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, the_time_zone_of_the_process_has_no_effect)
{
    const arguments_t zero = {{"d", L"0"}};
    expect_in_tokyo({L"{d, time,HH:mm z}", zero, L"00:00 GMT"});
    expect_in_tokyo({L"{d, date,::Hm}", zero, L"00:00"});
    expect_in_tokyo({L"{d, plural, other{{d, time,HH:mm z}}}", zero, L"00:00 GMT"});
    expect_in_tokyo({L"{d, select, other{{d, choice, 0#{d, date,HH:mm}}}}", zero, L"00:00"});
    for (const char* const locale : {"", "xx", "de_AT", "en@timezone=Asia/Tokyo", "en@timezone="})
        expect_in_tokyo({L"{d, date,dd HH:mm}", zero, L"01 00:00"}, locale);
    expect_in_tokyo({L"{d, date,dd HH:mm}", zero, L"01 00:00"}, "en@x=" + std::string(3000, 'y'));
}

TEST(rova_i18n_test, one_argument_may_be_a_text_and_a_number)
{
    const std::wstring pattern = L"{n} of {n, plural, one{# file} other{# files}}";
    const row_t rows[] = {
        {pattern, {{"n", L"007"}}, L"007 of 7 files"},
        {pattern, {{"n", L"01"}}, L"01 of 1 file"},
        {pattern, {{"n", L"x"}}, L"x of {n}"},
        {pattern, {}, L"{n} of {n}"},
        {L"{n, plural, one{{n} file} other{{n} files}}", {{"n", L"007"}}, L"007 files"},
        {L"{n, plural, other{{n, number,#.00} {n}}}", {{"n", L"007"}}, L"7.00 007"},
        {L"{n, number} {n} {m} {m, number}", {{"n", L"01"}, {"m", L"02"}}, L"1 01 02 2"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, one_argument_may_be_a_selector_and_a_number)
{
    const std::wstring pattern =
        L"{n, select, 01{first} other{any}} {n, plural, one{one} other{#}} {n}";
    const row_t rows[] = {
        {pattern, {{"n", L"01"}}, L"first one 01"},
        {pattern, {{"n", L"1"}}, L"any one 1"},
        {pattern, {{"n", L"x"}}, L"any {n} x"},
        {pattern, {}, L"{n} {n} {n}"},
        {L"{n, select, 01 {a} other {b}}{n, number}", {{"n", L"01"}}, L"a1"},
        {L"{n, plural, other{{n, select, 01{# {n}} other{b}}}}", {{"n", L"01"}}, L"# 01"},
        {L"{n, plural, other{{n, select, 01{# {n}} other{b}}}}", {}, L"{n}"},
        {L"{0, select, a{x} other{y}}{0, number}", {}, L"{0}{0}"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_private_use_name_does_not_collide_with_an_argument_of_two_uses)
{
    EXPECT_EQ(format(L"{\xE000\x30} {\xE000\x31} {n} {n, number}", {{"\xEE\x80\x80"
                                                                     "0",
                                                                     L"p"},
                                                                    {"n", L"01"},
                                                                    {"\xEE\x80\x80"
                                                                     "2",
                                                                     L"q"}}),
              L"p {\xE000\x31} 01 1");
}

TEST(rova_i18n_test, plurals_and_selects_can_be_nested)
{
    const std::wstring pattern = L"{g, select, f{{n, plural, one{her # cat} other{her # cats}}} "
                                 L"other{{n, plural, one{a cat} other{# cats of {who}}}}}";
    const row_t rows[] = {
        {pattern, {{"g", L"f"}, {"n", L"1"}}, L"her 1 cat"},
        {pattern, {{"g", L"f"}, {"n", L"2"}}, L"her 2 cats"},
        {pattern, {{"g", L"x"}, {"n", L"2"}, {"who", L"him"}}, L"2 cats of him"},
        {pattern, {{"g", L"f"}}, L"{n}"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, apostrophes_quote_braces_and_are_literal_elsewhere)
{
    const row_t rows[] = {
        {L"it's {n}", {{"n", L"1"}}, L"it's 1"},
        {L"it''s {n}", {{"n", L"1"}}, L"it's 1"},
        {L"'{n}' {n}", {{"n", L"1"}}, L"{n} 1"},
        {L"'{n}'", {{"n", L"1"}}, L"{n}"},
        {L"it's", {}, L"it's"},
        {L"it''s", {}, L"it's"},
        {L"'{' {n}", {{"n", L"1"}}, L"{ 1"},
        {L"{n} '{", {{"n", L"1"}}, L"1 {"},
        {L"{n, plural, other{'#' # it's}}", {{"n", L"1"}}, L"# 1 it's"},
        {L"'{n}' {n} {n, number} it''s", {{"n", L"01"}}, L"{n} 01 1 it's"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_pattern_of_plain_placeholders_is_formatted_as_by_icu)
{
    const std::vector<std::wstring> parts = {
        L"{a}",  L"{ b }", L"{0}", L"{none}",   L"{a}{b}",     L"'", L"''", L"'{'", L"'{a}'",
        L"it's", L"#",     L"|",   L"a \u00e9", L"\U0001f600", L"}", L"{",  L"",    L"'#'"};
    const arguments_t arguments = {{"0", L"zero"}, {"a", L"{b}'"}, {"b", L"\u00e9\U0001f600"}};
    for (const std::wstring& first : parts)
        for (const std::wstring& second : parts)
            for (const std::wstring& third : parts) {
                const std::wstring pattern = first + second + third + L"x";
                ASSERT_EQ(format(pattern, arguments), format_by_icu(pattern, arguments))
                    << utf16_to_utf8(pattern);
            }
}

TEST(rova_i18n_test, names_values_and_texts_are_unicode)
{
    const row_t rows[] = {
        {L"\x20AC {ma\xDF} \x6F22", {{"ma\xC3\x9F", L"\xE9\x436"}}, L"\x20AC \xE9\x436 \x6F22"},
        {L"{\xD801\xDC28}", {{"\xF0\x90\x90\xA8", L"x"}}, L"x"},
        {L"{\xD801\xDC28} {\xD801\xDC28, number}", {{"\xF0\x90\x90\xA8", L"01"}}, L"01 1"},
        {L"\xD83D\xDE00{n}", {{"n", L"\xD83D\xDE00"}}, L"\xD83D\xDE00\xD83D\xDE00"},
        {L"{g, select, \xE9{yes} other{no}}", {{"g", L"\xE9"}}, L"yes"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_single_element_beyond_the_bmp_is_written_as_its_character)
{
    const row_t rows[] = {
        {L"\x1F600", {}, L"\xD83D\xDE00"},
        {L"\x1F600{n}", {{"n", L"\x1F601"}}, L"\xD83D\xDE00\xD83D\xDE01"},
        {L"{\x10428}", {{"\xF0\x90\x90\xA8", L"x"}}, L"x"},
        {L"{\x10428}", {}, L"{\xD801\xDC28}"},
        {L"{n}", {{"n", L"\xD800\x1DC00"}}, L"\xD800\xD837\xDC00"},
        {L"{n}", {{"n", L"\x10FFFF"}}, L"\xDBFF\xDFFF"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_character_beyond_the_bmp_is_written_at_every_position_of_a_text)
{
    for (std::size_t size = 1; size <= 20; ++size)
        for (std::size_t position = 0; position != size; ++position) {
            std::wstring text(size, L'a');
            text[position] = L'\x1F4C1';
            std::wstring written(size + 1, L'a');
            written[position] = L'\xD83D';
            written[position + 1] = L'\xDCC1';
            EXPECT_EQ(format(L"{a}", {{"a", text}}), written) << position << " of " << size;
        }
}

TEST(rova_i18n_test, an_unpaired_surrogate_stays_as_it_is)
{
    const row_t rows[] = {
        {L"a\xD800z", {}, L"a\xD800z"},
        {L"\xDC00{n}\xD800", {{"n", L"\xDC00\xD800"}}, L"\xDC00\xDC00\xD800\xD800"},
        {L"{\xD800}", {{"\xEF\xBF\xBD", L"x"}}, L"x"},
        {L"{\xD800}{\xDC00}", {{"\xEF\xBF\xBD", L"x"}}, L"xx"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, an_element_that_is_not_a_character_is_replaced)
{
    for (const std::int64_t value : {std::int64_t{0x110000}, std::int64_t{-1},
                                     std::int64_t{INT32_MIN}, std::int64_t{INT32_MAX}}) {
        EXPECT_EQ(format(L"a" + element(value) + L"z"), L"a\xFFFDz") << value;
        EXPECT_EQ(format(L"{n}", {{"n", element(value)}}), L"\xFFFD") << value;
    }
}

TEST(rova_i18n_test, an_argument_whose_name_is_not_utf8_is_not_used)
{
    EXPECT_EQ(format(L"{n} {\xFFFD}", {{"n\xFF", L"1"}, {"\xFF", L"2"}}), L"{n} {\xFFFD}");
}

TEST(rova_i18n_test, names_are_found_although_utf8_and_utf16_order_them_differently)
{
    EXPECT_EQ(format(L"{\xFF41} {\xD801\xDC00} {\xFF42} {a}", {{"a", L"1"},
                                                               {"\xEF\xBD\x81", L"2"},
                                                               {"\xEF\xBD\x82", L"3"},
                                                               {"\xF0\x90\x90\x80", L"4"}}),
              L"2 4 3 1");
}

TEST(rova_i18n_test, names_that_are_the_same_in_utf8_are_one_argument)
{
    EXPECT_EQ(format(L"{n\xD800} {n\xD801} {n\xFFFD} {p}", {{"n\xEF\xBF\xBD", L"1"}, {"p", L"2"}}),
              L"1 1 1 2");
}

TEST(rova_i18n_test, a_malformed_pattern_is_returned_unchanged)
{
    const std::wstring patterns[] = {
        L"{",
        L"{n",
        L"{}",
        L"{n, plural}",
        L"{n, plural, one{x}}",
        L"{n, plural, other{x}",
        L"{n, plural, other{#}} {",
        L"{n, select, a{x}}",
        L"{n, choice}",
        L"{n, choice, x#y}",
        L"{n, unknown}",
        L"{n, number, ::unknown-stem}",
        L"{n n}",
        L"{00}",
        L"{-1}",
        L"{99999999999}",
        L"{n} it''s {",
        L"{n\0}"s,
        L"{n, plural, =x{y} other{z}}",
        L"{n} \x1F600 {",
        L"{" + element(-1),
        L"{" + std::wstring(70000, L'n') + L"}",
    };
    expect_unformatted(patterns, {{"n", L"1"}});
}

TEST(rova_i18n_test, braces_can_be_nested_up_to_a_hundred_deep)
{
    const row_t rows[] = {
        {nested(50), {{"n", L"1"}}, L"x"},
        {nested(50), {}, L"{n}"},
        {L"{n}" + nested(50), {{"n", L"1"}}, L"1x"},
        {nested(51), {{"n", L"1"}}, nested(51)},
        {nested(30000), {{"n", L"1"}}, nested(30000)},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, texts_can_be_nested_up_to_fifty_deep)
{
    EXPECT_EQ(format(nested_choice(50), {{"n", L"01"}}), L"01");
    EXPECT_EQ(format(nested_choice(51), {{"n", L"01"}}), nested_choice(51));
}

TEST(rova_i18n_test, quoted_braces_do_not_hide_the_depth)
{
    const std::wstring pattern = repeat(L"{n,plural,other{'}}}}'", 10000) + repeat(L"}}", 10000);
    EXPECT_EQ(format(pattern, {{"n", L"1"}}), pattern);
}

TEST(rova_i18n_test, adjacent_placeholders_are_not_nested)
{
    EXPECT_EQ(format(repeat(L"{n}", 10000), {{"n", L"1"}}), std::wstring(10000, L'1'));
}

TEST(rova_i18n_test, a_small_stack_is_enough)
{
    run_on_small_stack([] {
        EXPECT_EQ(format(nested(50), {{"n", L"1"}}), L"x");
        const std::wstring select = repeat(L"{n,select,1{", 50) + L"x" + repeat(L"}other{}}", 50);
        EXPECT_EQ(format(select, {{"n", L"1"}}), L"x");
        EXPECT_EQ(format(nested_choice(50), {{"n", L"01"}}), L"01");
        EXPECT_EQ(format(nested_choice(99), {{"n", L"01"}}), nested_choice(99));
        const std::wstring braces(1000000, L'{');
        EXPECT_EQ(format(braces, {}), braces);
    });
}

TEST(rova_i18n_test, a_thousand_names_can_be_filled)
{
    const row_t row = many_names(1000);
    EXPECT_EQ(format(row.pattern, row.arguments), row.text);
}

TEST(rova_i18n_test, a_pattern_of_more_than_a_thousand_names_is_returned_unchanged)
{
    const row_t row = many_names(1001);
    EXPECT_EQ(format(row.pattern, row.arguments), row.pattern);
}

TEST(rova_i18n_test, a_pattern_of_more_than_a_thousand_typed_arguments_is_returned_unchanged)
{
    const std::wstring pattern = repeat(L"{n,number}", 1000);
    EXPECT_EQ(format(pattern, {{"n", L"1"}}), std::wstring(1000, L'1'));
    EXPECT_EQ(format(pattern + L"{n,date}", {{"n", L"1"}}), pattern + L"{n,date}");
}

TEST(rova_i18n_test, a_pattern_of_more_than_ten_thousand_placeholders_is_returned_unchanged)
{
    const std::wstring numbers = L"{n,plural,other{" + std::wstring(9999, L'#') + L"}}";
    EXPECT_TRUE(format(numbers, {{"n", L"1"}}) == std::wstring(9999, L'1'));
    EXPECT_TRUE(is_returned_unchanged(numbers + L"{n}", {{"n", L"1"}}));
    EXPECT_TRUE(is_returned_unchanged(repeat(L"{n}", 10001), {{"n", L"1"}}));
    const std::wstring date = L"{n,date,'" + std::wstring(9997, L'x') + L"'}";
    EXPECT_TRUE(format(date, {{"n", L"1"}}) == std::wstring(9997, L'x'));
    EXPECT_TRUE(is_returned_unchanged(date + L"{n}", {{"n", L"1"}}));
}

TEST(rova_i18n_test, a_number_sign_outside_of_a_plural_is_not_a_placeholder)
{
    const std::wstring signs(20000, L'#');
    EXPECT_TRUE(format(signs + L"{n}", {{"n", L"1"}}) == signs + L"1");
}

TEST(rova_i18n_test, a_pattern_of_many_names_and_many_placeholders_is_returned_unchanged)
{
    const row_t row = many_names(1000);
    EXPECT_TRUE(format(row.pattern + row.pattern, row.arguments) == row.text + row.text);
    EXPECT_TRUE(is_returned_unchanged(row.pattern + row.pattern + L"{n0}", row.arguments));
}

TEST(rova_i18n_test, a_pattern_of_more_than_a_million_characters_is_returned_unchanged)
{
    const std::wstring longest(1048576 - 3, L'x');
    EXPECT_TRUE(format(longest + L"{n}", {{"n", L"1"}}) == longest + L"1");
    EXPECT_TRUE(is_returned_unchanged(longest + L"{n}x", {{"n", L"1"}}));
}

TEST(rova_i18n_test,
     a_pattern_whose_result_exceeds_sixteen_million_characters_is_returned_unchanged)
{
    const std::wstring pattern = repeat(L"{n}", 10000);
    EXPECT_EQ(format(pattern, {{"n", std::wstring(1674, L'x')}}).size(), 16740000U);
    EXPECT_TRUE(is_returned_unchanged(pattern, {{"n", std::wstring(1675, L'x')}}));
    const std::wstring mixed = L"{n}{n}{n,select,other{}}{n,plural,other{}}";
    EXPECT_TRUE(is_returned_unchanged(mixed, {{"n", std::wstring(8388608, L'x')}}));
}

TEST(rova_i18n_test, a_text_that_only_selects_may_be_long)
{
    const std::wstring pattern = repeat(L"{n,select,other{x}}", 1000);
    EXPECT_EQ(format(pattern, {{"n", std::wstring(1000000, L'y')}}), std::wstring(1000, L'x'));
}

TEST(rova_i18n_test, a_pattern_with_a_large_power_of_ten_in_a_style_is_returned_unchanged)
{
    const std::wstring patterns[] = {
        L"{n,number,::scale/1E100}",
        L"{n,number,:: scale/1e+10000000}",
        L"{n,number,::precision-unlimited scale/1E-000999999999}",
        L"{n,number,::precision-increment/1E999999999}",
        L"{n,plural,other{{n,number,::scale/1E2147483647}}}",
    };
    expect_unformatted(patterns, {{"n", L"1"}});
}

TEST(rova_i18n_test, a_style_may_have_a_power_of_ten)
{
    const row_t rows[] = {
        {L"{n,number,::scale/1E3}", {{"n", L"1"}}, L"1,000"},
        {L"{n,number,::scale/1e-002}", {{"n", L"1"}}, L"0.01"},
        {L"{n,number,::scale/1E99 group-off}", {{"n", L"1"}}, L"1" + std::wstring(99, L'0')},
        {L"{n,number,::scientific}", {{"n", L"1000"}}, L"1E3"},
        {L"{n,number,0.0E000}", {{"n", L"1000"}}, L"1.0E003"},
        {L"{n,number,'CODE500' 0}", {{"n", L"1"}}, L"CODE500 1"},
    };
    expect_rows(rows);
}

TEST(rova_i18n_test, a_hostile_pattern_is_refused_quickly)
{
    const usage_t usage;
    EXPECT_TRUE(is_returned_unchanged(repeat(L"{a}", 1000000), {{"a", std::wstring(1000, L'x')}}));
    for (const std::size_t count : {std::size_t{100000}, std::size_t{8000000}}) {
        const std::wstring pattern = L"{a,plural,other{" + std::wstring(count, L'#') + L"}}";
        EXPECT_TRUE(is_returned_unchanged(pattern, {{"a", L"1e300"}}));
    }
    std::wstring pattern;
    for (int i = 0; i != 500; ++i) {
        const std::wstring name = std::to_wstring(i);
        pattern.append(L"{n").append(name).append(L",plural,other{}}{n");
        pattern.append(name).append(L"}");
    }
    EXPECT_TRUE(is_returned_unchanged(repeat(pattern, 1000), many_names(500).arguments));
    EXPECT_LT(usage.seconds(), 10);
}

TEST(rova_i18n_test, the_time_is_linear_in_the_number_of_names)
{
    const usage_t usage;
    const row_t row = many_names(100000);
    EXPECT_EQ(format(row.pattern, row.arguments), row.pattern);
    const row_t used = many_names(1000);
    EXPECT_EQ(format(used.pattern, row.arguments), used.text);
    EXPECT_LT(usage.seconds(), 20);
}

TEST(rova_i18n_test, a_long_text_is_inserted_whole)
{
    const std::wstring long_text(1000000, L'\xE9');
    EXPECT_EQ(format(long_text + L"{n}", {{"n", long_text}}), long_text + long_text);
}

TEST(rova_i18n_test, the_locale_determines_the_format_of_numbers)
{
    const std::pair<std::string, std::wstring> rows[] = {
        {"en", L"1,234,567.5"},
        {"de", L"1.234.567,5"},
        {"de_AT", L"1\xA0\x32\x33\x34\xA0\x35\x36\x37,5"},
        {"de_XX", L"1.234.567,5"},
        {"pl", L"1\xA0\x32\x33\x34\xA0\x35\x36\x37,5"},
        {"en_IN", L"12,34,567.5"},
        {"", L"1,234,567.5"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(format(L"{n, number}", {{"n", L"1234567.5"}}, row.first), row.second)
            << row.first;
}

TEST(rova_i18n_test, an_empty_locale_is_the_root_locale)
{
    const std::wstring pattern = L"{n, plural, one{one} other{other}}";
    EXPECT_EQ(message_t(pattern).as_ustring(list_of({{"n", L"1"}})), L"other");
    EXPECT_EQ(format(pattern, {{"n", L"1"}}, ""), L"other");
}

TEST(rova_i18n_test, an_invalid_locale_is_the_root_locale)
{
    for (const auto& locale : {"@@@@"s, "xx"s, "C"s, std::string(1000, 'q'), "\xFF\x80"s, "\0"s}) {
        EXPECT_EQ(format(L"{n, plural, one{one} other{other}} {n, number}", {{"n", L"1"}}, locale),
                  L"other 1")
            << testing::PrintToString(locale);
    }
}

TEST(rova_i18n_test, the_locale_of_the_process_has_no_effect)
{
    const arguments_t number = {{"n", L"1234567.5"}};
    for (const char* const locale : {"", "en", "xx", "C", "@@@@"})
        expect_in_german_process({L"{n, number}", number, L"1,234,567.5"}, locale);
    expect_in_german_process({L"{n, plural, other{#}}", number, L"1,234,567.5"}, "xx");
    expect_in_german_process({L"{n, date,MMMM}", {{"n", L"15e9"}}, L"M06"}, "xx");
}

TEST(rova_i18n_test, the_language_of_the_process_is_not_used_to_spell_numbers)
{
    for (const char* const locale : {"", "xx", "zu"})
        expect_in_german_process({L"{n, spellout}", {{"n", L"21"}}, L"21"}, locale);
    expect_in_german_process({L"{n, SpellOut}", {{"n", L"21"}}, L"twenty-one"}, "en");
}

TEST(rova_i18n_test, a_copy_outlives_its_original)
{
    auto original = std::make_unique<message_t>(L"<{n}>", "en");
    const message_t copy(*original);
    message_t assigned;
    assigned = *original;
    original.reset();
    EXPECT_EQ(copy.as_ustring(list_of({{"n", L"1"}})), L"<1>");
    EXPECT_EQ(assigned.as_ustring(list_of({{"n", L"2"}})), L"<2>");
}

TEST(rova_i18n_test, a_message_owns_its_pattern)
{
    std::wstring pattern = L"<{n}>";
    std::string locale = "de";
    const message_t message(pattern, locale);
    pattern = L"gone";
    locale = "pl";
    EXPECT_EQ(message.as_ustring(list_of({{"n", L"1"}})), L"<1>");
}

TEST(rova_i18n_test, a_message_can_be_formatted_repeatedly)
{
    const message_t message(L"{n} {n, plural, one{# file} other{# files}}", "en");
    EXPECT_EQ(message.as_ustring(list_of({{"n", L"1"}})), L"1 1 file");
    EXPECT_EQ(message.as_ustring(list_of({})), L"{n} {n}");
    EXPECT_EQ(message.as_ustring(list_of({{"n", L"02"}})), L"02 2 files");
}

TEST(rova_i18n_test, one_message_is_formatted_by_threads_at_the_same_time)
{
    const message_t message(
        L"{n} {n, plural, one{# file} other{# files}} {n, number} {n, selectordinal, other{#}}",
        "en");
    std::atomic<int> correct{0};
    run_threads(8, [&](int thread) {
        const message_t copy = message;
        const std::wstring number = std::to_wstring(thread + 2);
        const varg_list list = list_of({{"n", number}});
        const std::wstring text = number + L" " + number + L" files " + number + L" " + number;
        for (int round = 0; round != 200; ++round)
            correct += copy.as_ustring(list) == text ? 1 : 0;
    });
    EXPECT_EQ(correct.load(), 8 * 200);
}

TEST(rova_i18n_test, a_catalog_is_used_and_deleted_through_its_base)
{
    class counting_catalog_t : public catalog_t
    {
    public:
        explicit counting_catalog_t(int& deleted) : m_deleted(deleted) {}
        ~counting_catalog_t() override { ++m_deleted; }

        message_t message(const ustring16& id) const override
        {
            return id == L"files" ? message_t(L"{n} files", "en") : message_t();
        }

    private:
        int& m_deleted;
    };
    int deleted = 0;
    std::unique_ptr<catalog_t> catalog = std::make_unique<counting_catalog_t>(deleted);
    EXPECT_EQ(catalog->message(L"files").as_ustring(list_of({{"n", L"2"}})), L"2 files");
    EXPECT_EQ(catalog->message(L"none").as_ustring(list_of({{"n", L"2"}})), L"");
    catalog.reset();
    EXPECT_EQ(deleted, 1);
}

} // namespace

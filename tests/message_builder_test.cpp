#include <velmoext1/message_builder.h>

#include "support.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <limits>
#include <locale>

using namespace velmoext_1_4_8;

namespace
{

template <typename Value>
std::wstring text_of(Value value)
{
    return message_builder_t(L"t").arg(L"n", value).build()->get_content().args.at(L"n");
}

// Writes 1234.5 as 1.234,5.
struct dotted_numbers_t : std::numpunct<wchar_t>
{
    wchar_t do_decimal_point() const override { return L','; }
    wchar_t do_thousands_sep() const override { return L'.'; }
    std::string do_grouping() const override { return "\3"; }
};

} // namespace

TEST(message_builder_test, a_message_has_all_that_was_set)
{
    const message_ptr_t message = message_builder_t(L"file_large")
                                      .severity(message_t::warning)
                                      .source(L"audit")
                                      .flags(3)
                                      .arg(L"path", L"/a")
                                      .arg(L"size", 4096)
                                      .attribute(L"host", L"alpha")
                                      .element(L"note", L"b")
                                      .build();
    const message_t::message_content_t content = message->get_content();
    EXPECT_EQ(message->get_type(), L"file_large");
    EXPECT_EQ(message->get_severity(), message_t::warning);
    EXPECT_EQ(message->get_source(), L"audit");
    EXPECT_EQ(message->get_flags(), 3);
    EXPECT_EQ(content.args, (string_map_t{{L"path", L"/a"}, {L"size", L"4096"}}));
    EXPECT_EQ(content.attributes, (string_map_t{{L"host", L"alpha"}, {L"tool", L"audit"}}));
    EXPECT_EQ(content.elements, (string_map_t{{L"note", L"b"}}));
}

TEST(message_builder_test, a_message_has_nothing_else)
{
    const message_ptr_t message = message_builder_t(L"").build();
    EXPECT_TRUE(message->empty());
    EXPECT_EQ(message->get_flags(), 0);
    EXPECT_TRUE(message->get_content().attributes.empty()) << "no source";
}

TEST(message_builder_test, the_last_value_of_a_name_counts)
{
    const message_ptr_t message = message_builder_t(L"t").arg(L"n", 1).arg(L"n", L"b").build();
    EXPECT_EQ(message->get_content().args, (string_map_t{{L"n", L"b"}}));
}

TEST(message_builder_test, an_attribute_that_names_the_tool_precedes_the_source)
{
    const message_ptr_t message =
        message_builder_t(L"t").source(L"b").attribute(L"tool", L"a").build();
    EXPECT_EQ(message->get_source(), L"a");
}

TEST(message_builder_test, each_message_is_new)
{
    message_builder_t builder(L"t");
    const message_ptr_t one = builder.arg(L"n", 1).build();
    const message_ptr_t other = builder.arg(L"n", 2).build();
    EXPECT_NE(one, other);
    EXPECT_EQ(one->get_content().args.at(L"n"), L"1");
    EXPECT_EQ(other->get_content().args.at(L"n"), L"2");
}

TEST(message_builder_test, numbers_are_in_plain_digits)
{
    EXPECT_EQ(text_of(0), L"0");
    EXPECT_EQ(text_of(-1234567), L"-1234567");
    EXPECT_EQ(text_of(std::numeric_limits<std::int64_t>::min()), L"-9223372036854775808");
    EXPECT_EQ(text_of(std::numeric_limits<std::uint64_t>::max()), L"18446744073709551615");
    EXPECT_EQ(text_of(std::uint8_t(65)), L"65");
    EXPECT_EQ(text_of(0.1), L"0.1");
    EXPECT_EQ(text_of(0.1F), L"0.1");
    EXPECT_EQ(text_of(-1234567.5), L"-1234567.5");
    EXPECT_EQ(text_of(1e21), L"1000000000000000000000");
}

TEST(message_builder_test, numbers_of_any_size_fit)
{
    EXPECT_EQ(text_of(std::numeric_limits<double>::lowest()).size(), 310U);
    EXPECT_EQ(text_of(-std::numeric_limits<double>::denorm_min()).size(), 327U);
    EXPECT_EQ(text_of(-2.2250738585072014e-308).size(), 327U);
    EXPECT_EQ(text_of(std::numeric_limits<long double>::lowest()).size(), 4934U);
    EXPECT_GT(text_of(-std::numeric_limits<long double>::denorm_min()).size(), 4900U);
}

TEST(message_builder_test, truth_values_are_words)
{
    EXPECT_EQ(text_of(true), L"true");
    EXPECT_EQ(text_of(false), L"false");
}

TEST(message_builder_test, the_locale_has_no_effect)
{
    const std::locale former =
        std::locale::global(std::locale(std::locale::classic(), new dotted_numbers_t));
    EXPECT_EQ(text_of(1234567.5), L"1234567.5");
    EXPECT_EQ(text_of(1234567), L"1234567");
    std::locale::global(former);
}

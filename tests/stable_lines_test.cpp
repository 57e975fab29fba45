#include "encoding/stable_lines.h"

#include "log_oracle.h"
#include "random_documents.h"
#include "random_messages.h"
#include "usage.h"
#include "writer_oracle.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <string>

using namespace velmoext_1_4_8;

namespace
{

const std::string log_begin = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n";
const std::string log_end = "</log>\n";

std::string lines_of(const std::string& attributes, const std::string& children)
{
    return " <msg" + attributes + ">\n" + children + " </msg>\n";
}

const std::string type_line = "  <type>t</type>\n";

std::string with_children(const std::string& before, const std::string& after = std::string())
{
    return lines_of("", before + type_line + after);
}

// Returns the lines as libxml2 reads and writes them again.
std::string written_again(const std::string& lines)
{
    return written_log(log_oracle_t().read(log_begin + lines + log_end).delivered);
}

// Returns the size of the stable lines at the beginning. Expects that libxml2 writes them
// unchanged.
std::size_t expect_stable(const std::string& text)
{
    const std::size_t size = measure_stable_lines(text);
    if (size != 0) {
        const std::string lines = text.substr(0, size);
        EXPECT_EQ(written_again(lines), log_begin + lines + log_end);
    }
    return size;
}

struct deviation_t
{
    const char* name;
    std::string lines;
};

std::ostream& operator<<(std::ostream& out, const deviation_t& deviation)
{
    return out << deviation.lines;
}

std::string name_of(const testing::TestParamInfo<deviation_t>& info)
{
    return info.param.name;
}

typedef testing::TestWithParam<deviation_t> stable_lines_deviation_test;

} // namespace

TEST(stable_lines_test, lines_of_plain_text_are_stable)
{
    for (const std::string& lines :
         {with_children(""), with_children("", "  <severity>INFO</severity>\n"),
          with_children("", "  <severity>WARNING</severity>\n"),
          with_children("", "  <severity>ERROR</severity>\n"),
          with_children("", "  <severity>CRITICAL</severity>\n"),
          lines_of(" a=\"\" b=\"'/=!\" tool=\"t\"", type_line),
          with_children("  <arg name=\"a b\">x</arg>\n  <arg name=\"a c\"> ]] \x7F</arg>\n"),
          with_children("  <_>x</_>\n  <name>y</name>\n  <typ>z</typ>\n  <types>z</types>\n"),
          with_children("  <arg name=\"z\">1</arg>\n  <a.-1>2</a.-1>\n")}) {
        EXPECT_EQ(expect_stable(lines), lines.size()) << lines;
        EXPECT_EQ(expect_stable(lines + lines), 2 * lines.size()) << lines;
    }
}

TEST(stable_lines_test, lines_are_measured_up_to_the_first_message_that_is_not_stable)
{
    const std::string stable = with_children("");
    for (const std::string& rest :
         {std::string(), std::string("</log>\n"), std::string("\n"), "\n" + stable, "x" + stable,
          stable.substr(1), stable.substr(0, stable.size() - 1), with_children("<e>x</e>\n")})
        EXPECT_EQ(expect_stable(stable + rest), stable.size()) << rest;
}

TEST(stable_lines_test, lines_truncated_at_any_byte_are_not_stable)
{
    const std::string lines =
        lines_of(" a=\"b\"", "  <arg name=\"n\">x</arg>\n  <e>y</e>\n" + type_line +
                                 "  <severity>ERROR</severity>\n");
    ASSERT_EQ(expect_stable(lines), lines.size());
    for (std::size_t size = 0; size != lines.size(); ++size)
        EXPECT_EQ(measure_stable_lines(lines.substr(0, size)), 0U) << size;
}

TEST_P(stable_lines_deviation_test, is_not_stable)
{
    EXPECT_EQ(measure_stable_lines(GetParam().lines), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    all, stable_lines_deviation_test,
    testing::Values(
        deviation_t{"no_type", lines_of("", "")},
        deviation_t{"an_empty_type", lines_of("", "  <type></type>\n")},
        deviation_t{"a_type_beyond_ascii", lines_of("", "  <type>\xC3\xA9</type>\n")},
        deviation_t{"a_reference", lines_of("", "  <type>&amp;</type>\n")},
        deviation_t{"a_tab", lines_of("", "  <type>a\tb</type>\n")},
        deviation_t{"a_quote", lines_of("", "  <type>a\"b</type>\n")},
        deviation_t{"an_angle_bracket", lines_of("", "  <type>a>b</type>\n")},
        deviation_t{"a_zero", lines_of("", std::string("  <type>a\0b</type>\n", 18))},
        deviation_t{"two_types", with_children(type_line)},
        deviation_t{"an_unknown_severity", with_children("", "  <severity>X</severity>\n")},
        deviation_t{"a_severity_in_lower_case", with_children("", "  <severity>info</severity>\n")},
        deviation_t{"an_empty_severity", with_children("", "  <severity></severity>\n")},
        deviation_t{"an_early_severity", with_children("  <severity>INFO</severity>\n")},
        deviation_t{"two_severities", with_children("", "  <severity>INFO</severity>\n"
                                                        "  <severity>INFO</severity>\n")},
        deviation_t{"a_child_after_the_type", with_children("", "  <e>x</e>\n")},
        deviation_t{"an_empty_argument", with_children("  <arg name=\"a\"></arg>\n")},
        deviation_t{"an_argument_without_an_attribute", with_children("  <arg>x</arg>\n")},
        deviation_t{"an_argument_without_a_name", with_children("  <arg name=\"\">x</arg>\n")},
        deviation_t{"arguments_in_another_order", with_children("  <arg name=\"b\">x</arg>\n"
                                                                "  <arg name=\"a\">x</arg>\n")},
        deviation_t{"an_argument_twice", with_children("  <arg name=\"a\">x</arg>\n"
                                                       "  <arg name=\"a\">x</arg>\n")},
        deviation_t{"an_argument_after_an_element", with_children("  <e>x</e>\n"
                                                                  "  <arg name=\"a\">x</arg>\n")},
        deviation_t{"an_argument_with_another_attribute",
                    with_children("  <arg nam=\"a\">x</arg>\n")},
        deviation_t{"an_empty_element", with_children("  <e></e>\n")},
        deviation_t{"an_element_without_an_end_tag", with_children("  <e/>\n")},
        deviation_t{"an_element_with_an_attribute", with_children("  <e a=\"b\">x</e>\n")},
        deviation_t{"an_element_with_another_end_tag", with_children("  <e>x</f>\n")},
        deviation_t{"an_element_with_a_colon", with_children("  <a:b>x</a:b>\n")},
        deviation_t{"an_element_with_an_invalid_name", with_children("  <1>x</1>\n")},
        deviation_t{"elements_in_another_order", with_children("  <f>x</f>\n  <e>x</e>\n")},
        deviation_t{"an_element_msg", with_children("  <msg>x</msg>\n")},
        deviation_t{"an_element_log", with_children("  <log>x</log>\n")},
        deviation_t{"an_element_in_an_element", with_children("  <e><f>x</f></e>\n")},
        deviation_t{"attributes_in_another_order", lines_of(" b=\"\" a=\"\"", type_line)},
        deviation_t{"an_attribute_twice", lines_of(" a=\"\" a=\"\"", type_line)},
        deviation_t{"an_attribute_with_an_invalid_name", lines_of(" 1=\"\"", type_line)},
        deviation_t{"an_attribute_with_a_colon", lines_of(" a:b=\"\"", type_line)},
        deviation_t{"a_source_without_a_tool", lines_of(" source=\"s\"", type_line)},
        deviation_t{"single_quotes", lines_of(" a='b'", type_line)},
        deviation_t{"blanks_in_a_tag", lines_of("  a=\"b\"", type_line)},
        deviation_t{"no_indentation", with_children("").substr(1)},
        deviation_t{"more_indentation", " " + with_children("")},
        deviation_t{"another_indentation", with_children(" <e>x</e>\n")},
        deviation_t{"a_comment", with_children("<!-- c -->")},
        deviation_t{"a_character_data_section", with_children("  <e><![CDATA[x]]></e>\n")},
        deviation_t{"another_element", " <mso>\n" + type_line + " </mso>\n"},
        deviation_t{"another_end_tag", " <msg>\n" + type_line + " </mso>\n"}),
    name_of);

TEST(stable_lines_test, random_lines_that_are_stable_are_written_unchanged)
{
    std::uint64_t stable = 0;
    const random_seeds_t seeds(4000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        for (const std::string& log : {random_log(random), written_log({random_message(random)})})
            for (std::size_t at = log.find(" <msg"); at != std::string::npos;
                 at = log.find(" <msg", at + 1))
                stable += expect_stable(log.substr(at)) == 0 ? 0U : 1U;
        if (HasFailure())
            return;
    }
    EXPECT_GT(stable, seeds.count / 100);
}

// Searching for the end of each tag in all the rest would take a minute.
TEST(stable_lines_test, messages_that_are_not_stable_take_linear_time)
{
    std::string text;
    for (int i = 0; i < 200000; ++i)
        text += " <msg a ";
    const usage_t usage;
    for (std::size_t at = 0; at != text.size(); at += 8)
        ASSERT_EQ(measure_stable_lines(std::string_view(text).substr(at)), 0U);
    EXPECT_LT(usage.seconds(), 5);
}

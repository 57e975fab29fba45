#include "xml/reader_limits.h"

#include <rova/strings.h>

#include <gtest/gtest.h>

using namespace velmoext_1_4_8;

namespace
{

xml_text_t text(const std::string& utf8)
{
    return xml_text_t(ROVA_2_18::strings::utf8_to_utf16(utf8));
}

bool admit_name(reader_limits_t& limits, const std::string& name)
{
    return limits.admit_name(ROVA_2_18::strings::utf8_to_utf16(name), text(name));
}

bool admit_attribute(reader_limits_t& limits, const std::string& name, const std::string& value)
{
    return limits.admit_attribute(text(name), text(value));
}

bool admits_arg(const std::string& name)
{
    return reader_limits_t::admits_arg(text(name));
}

} // namespace

TEST(reader_limits_test, a_name_may_have_fifty_thousand_bytes)
{
    reader_limits_t limits;
    EXPECT_TRUE(admit_name(limits, std::string(50000, 'n')));
    EXPECT_FALSE(admit_name(limits, std::string(50001, 'n')));
}

TEST(reader_limits_test, an_element_may_have_a_thousand_attributes)
{
    reader_limits_t limits;
    for (int i = 0; i < 1000; ++i)
        EXPECT_TRUE(admit_attribute(limits, "a" + std::to_string(i), "x"));
    EXPECT_FALSE(admit_attribute(limits, "b", "x"));
}

TEST(reader_limits_test, what_is_no_name_is_refused)
{
    reader_limits_t limits;
    EXPECT_FALSE(admit_name(limits, "a b"));
    EXPECT_FALSE(admit_name(limits, ""));
}

TEST(reader_limits_test, names_use_up_the_room_for_names)
{
    reader_limits_t limits;
    int admitted = 0;
    while (admitted < 1000 && admit_name(limits, std::string(49999, 'n')))
        ++admitted;
    EXPECT_EQ(admitted, 70);
    EXPECT_FALSE(admit_name(limits, "n"));
}

TEST(reader_limits_test, a_name_that_is_refused_uses_up_nothing)
{
    reader_limits_t limits;
    for (int i = 0; i < 1000; ++i)
        admit_name(limits, std::string(50001, 'n'));
    EXPECT_TRUE(admit_name(limits, "n"));
}

TEST(reader_limits_test, namespaces_use_up_the_room_for_names)
{
    reader_limits_t limits;
    EXPECT_FALSE(admit_attribute(limits, "xmlns:a", std::string(3500001, 'x')));
    EXPECT_TRUE(admit_attribute(limits, "xmlns:a", std::string(3500000, 'x')));
    EXPECT_FALSE(admit_name(limits, "n"));
}

TEST(reader_limits_test, attributes_use_up_the_start_tag)
{
    reader_limits_t limits;
    EXPECT_TRUE(admit_attribute(limits, "a", std::string(9000000, 'x')));
    EXPECT_FALSE(admit_attribute(limits, "b", std::string(1000000, 'x')));
    EXPECT_TRUE(admit_attribute(limits, "c", "x"));
}

TEST(reader_limits_test, a_name_beyond_the_bmp_is_admitted_once)
{
    reader_limits_t limits;
    EXPECT_TRUE(admit_attribute(limits, "\xF0\x90\x90\x80", ""));
    EXPECT_FALSE(admit_attribute(limits, "\xF0\x90\x90\x80", ""));
    EXPECT_TRUE(admit_attribute(limits, "\xF0\x90\x90\x81", ""));
}

TEST(reader_limits_test, each_argument_has_a_start_tag_of_its_own)
{
    EXPECT_TRUE(admits_arg(std::string(9990000, 'x')));
    EXPECT_FALSE(admits_arg(std::string(9990001, 'x')));
    EXPECT_FALSE(admits_arg(std::string(2000000, '&')));
}

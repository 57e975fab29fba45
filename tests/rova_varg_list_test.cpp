#include <rova/varg_list.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace
{

using ROVA_2_18::generic::argument;
using ROVA_2_18::generic::varg_list;
using namespace std::string_literals;

typedef std::vector<std::pair<std::string, std::string>> named_values_t;

varg_list list_of(const std::vector<std::pair<std::string, std::wstring>>& arguments)
{
    varg_list list;
    for (const auto& one : arguments) {
        list.push_back(argument(one.first, one.second));
    }
    return list;
}

named_values_t values_of(const varg_list& list)
{
    named_values_t values;
    for (const auto& one : list) {
        values.emplace_back(one.name(), one.value().as_string());
    }
    return values;
}

TEST(rova_varg_list_test, an_argument_returns_its_name_and_value)
{
    const argument one("ma\xC3\x9F", L"12\x20AC"s);
    EXPECT_EQ(one.name(), "ma\xC3\x9F");
    EXPECT_EQ(one.value().as_string(), "12\xE2\x82\xAC");
}

TEST(rova_varg_list_test, a_name_is_kept_byte_by_byte)
{
    const std::string names[] = {""s, " spaced "s, "a\0b"s, "\xFF\x80"s};
    for (const auto& name : names) {
        EXPECT_EQ(argument(name, L""s).name(), name) << testing::PrintToString(name);
    }
}

TEST(rova_varg_list_test, an_argument_owns_its_name)
{
    std::string name = "before";
    const argument one(name, L""s);
    name = "after";
    EXPECT_EQ(one.name(), "before");
}

TEST(rova_varg_list_test, a_default_list_is_empty)
{
    const varg_list list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.size(), 0U);
    EXPECT_EQ(list.begin(), list.end());
}

TEST(rova_varg_list_test, arguments_are_in_the_order_in_which_they_were_added)
{
    const varg_list list = list_of({{"path", L"/tmp"}, {"code", L"5"}, {"agent", L"x"}});
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(values_of(list), (named_values_t{{"path", "/tmp"}, {"code", "5"}, {"agent", "x"}}));
}

TEST(rova_varg_list_test, a_name_may_occur_more_than_once)
{
    const varg_list list = list_of({{"path", L"one"}, {"path", L"two"}, {"path", L"one"}});
    EXPECT_EQ(values_of(list), (named_values_t{{"path", "one"}, {"path", "two"}, {"path", "one"}}));
}

TEST(rova_varg_list_test, size_is_the_number_of_arguments_that_iteration_visits)
{
    varg_list list;
    for (std::size_t count = 1; count <= 100; ++count) {
        list.push_back(argument("name", L"value"s));
        EXPECT_EQ(list.size(), count);
        EXPECT_EQ(std::distance(list.begin(), list.end()), static_cast<std::ptrdiff_t>(count));
    }
}

TEST(rova_varg_list_test, an_argument_of_the_list_itself_can_be_added)
{
    varg_list list = list_of({{"path", L"/tmp"}});
    for (int i = 0; i < 8; ++i) {
        list.push_back(*list.begin());
    }
    EXPECT_EQ(values_of(list), named_values_t(9, {"path", "/tmp"}));
}

TEST(rova_varg_list_test, a_copy_stays_as_it_is_when_the_original_grows)
{
    varg_list original = list_of({{"path", L"/tmp"}});
    const varg_list copy(original);
    original.push_back(argument("code", L"5"s));
    EXPECT_EQ(values_of(copy), (named_values_t{{"path", "/tmp"}}));
}

} // namespace

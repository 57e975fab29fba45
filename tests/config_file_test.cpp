#include "presentation/config_file.h"

#include <rova/debug.h>

#include <gtest/gtest.h>

#include <utility>

using namespace velmoext_1_4_8;

namespace
{

using basekit2::variant_bag_t;
using basekit2::variant_t;
using ROVA_2_18::debug::assert_handler_t;
using ROVA_2_18::debug::set_assert_handler;

std::vector<std::string> reports;

void on_assertion(const char* expression, const char* /*file*/, int /*line*/,
                  const char* /*function*/)
{
    reports.emplace_back(expression);
}

/// A file that the test builds entry by entry.
class config_file_test : public testing::Test
{
public:
    config_file_test() : m_former(set_assert_handler(on_assertion)) { reports.clear(); }
    ~config_file_test() override { set_assert_handler(m_former); }

protected:
    /// Adds an entry; the reference stays valid until the next one.
    variant_bag_t& add_entry(const variant_t& id = L"t")
    {
        variant_bag_t& entry = m_bag.add_bag(L"message_type");
        entry.add_value(L"id", id);
        return entry;
    }

    std::wstring find(const std::wstring& name = L"p", const std::wstring& type = L"t",
                      const std::wstring& prefix = std::wstring()) const
    {
        return config_file_t(m_bag).find_property(name, type, prefix);
    }

    variant_bag_t m_bag;

private:
    assert_handler_t m_former;
};

const std::vector<std::string> one_report = {"can_get<const wchar_t*>()"};

const std::pair<const char*, variant_t> other_types[] = {
    {"empty", variant_t()},
    {"boolean", variant_t(true)},
    {"integer", variant_t(std::int64_t{7})},
    {"floating point", variant_t(0.5)},
};

} // namespace

TEST_F(config_file_test, an_empty_bag_configures_nothing)
{
    EXPECT_EQ(find(), L"");
}

TEST_F(config_file_test, a_text_is_found_without_a_report)
{
    add_entry().add_value(L"p", L"a");
    EXPECT_EQ(find(), L"a");
    EXPECT_TRUE(reports.empty());
}

TEST_F(config_file_test, a_value_that_is_not_a_text_is_reported)
{
    for (const auto& [kind, value] : other_types) {
        reports.clear();
        m_bag = variant_bag_t();
        add_entry().add_value(L"p", value);
        EXPECT_EQ(find(), L"") << kind;
        EXPECT_EQ(reports, one_report) << kind;
    }
}

TEST_F(config_file_test, a_child_value_that_is_not_a_text_is_reported)
{
    for (const auto& [kind, value] : other_types) {
        reports.clear();
        m_bag = variant_bag_t();
        add_entry().add_bag(L"p").add_value(L"", value);
        EXPECT_EQ(find(), L"") << kind;
        EXPECT_EQ(reports, one_report) << kind;
    }
}

TEST_F(config_file_test, an_id_that_is_not_a_text_is_reported_and_matches_nothing)
{
    add_entry(variant_t(std::int64_t{7})).add_value(L"p", L"a");
    EXPECT_EQ(find(L"p", L"7"), L"");
    EXPECT_EQ(reports, one_report);
}

TEST_F(config_file_test, a_prefix_that_is_not_a_text_is_reported_and_matches_no_prefix)
{
    variant_bag_t& entry = add_entry();
    entry.add_value(L"prefix", variant_t(true));
    entry.add_value(L"p", L"a");
    EXPECT_EQ(find(L"p", L"t", L"true"), L"");
    EXPECT_EQ(reports, one_report);
}

TEST_F(config_file_test, a_value_that_is_not_requested_is_not_reported)
{
    variant_bag_t& entry = add_entry();
    entry.add_value(L"q", variant_t(true));
    entry.add_value(L"p", L"a");
    entry.add_bag(L"p").add_value(L"", variant_t(true));
    EXPECT_EQ(find(), L"a");
    EXPECT_TRUE(reports.empty());
}

TEST_F(config_file_test, named_values_of_a_child_are_not_its_text)
{
    variant_bag_t& child = add_entry().add_bag(L"p");
    child.add_value(L"p", L"named");
    child.add_value(L"", L"first");
    child.add_value(L"", L"second");
    EXPECT_EQ(find(), L"first");
}

TEST_F(config_file_test, only_the_first_value_of_a_name_counts)
{
    variant_bag_t& entry = add_entry();
    entry.add_value(L"p", L"a");
    entry.add_value(L"p", L"b");
    EXPECT_EQ(find(), L"a");
}

TEST_F(config_file_test, with_a_prefix_only_its_own_entries_are_searched)
{
    add_entry().add_value(L"p", L"bare");
    EXPECT_EQ(find(L"p", L"t", L"P"), L"");
    variant_bag_t& entry = add_entry();
    entry.add_value(L"prefix", L"P");
    entry.add_value(L"p", L"prefixed");
    EXPECT_EQ(find(L"p", L"t", L"P"), L"prefixed");
}

TEST_F(config_file_test, without_a_prefix_all_entries_of_the_type_are_searched)
{
    variant_bag_t& entry = add_entry();
    entry.add_value(L"prefix", L"P");
    entry.add_value(L"p", L"prefixed");
    EXPECT_EQ(find(), L"prefixed");
}

TEST_F(config_file_test, an_empty_id_and_an_empty_type_do_not_match)
{
    add_entry(L"").add_value(L"p", L"a");
    m_bag.add_bag(L"message_type").add_value(L"p", L"b");
    EXPECT_EQ(find(L"p", L""), L"");
}

TEST_F(config_file_test, a_bag_of_another_name_is_not_an_entry)
{
    variant_bag_t& other = m_bag.add_bag(L"message_types");
    other.add_value(L"id", L"t");
    other.add_value(L"p", L"a");
    EXPECT_EQ(find(), L"");
}

TEST_F(config_file_test, a_missing_file_is_null)
{
    EXPECT_FALSE(config_file_t::load(L"/nowhere/src.xml"));
    EXPECT_FALSE(config_file_t::load(L""));
}

#include <velmoext1/message.h>

#include "support.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

using namespace velmoext_1_4_8;

TEST(message_test, a_new_message_is_empty_and_has_all_defaults)
{
    const message_t message;
    EXPECT_TRUE(message.empty());
    EXPECT_EQ(message.get_type(), L"");
    EXPECT_EQ(message.get_severity(), message_t::none);
    EXPECT_EQ(message.get_flags(), 0);
    EXPECT_EQ(message.get_source(), L"");
    EXPECT_TRUE(message.get_content().args.empty());
    EXPECT_TRUE(message.get_content().attributes.empty());
    EXPECT_TRUE(message.get_content().elements.empty());
    EXPECT_EQ(message.get_content().next_arg_number, 1);
}

TEST(message_test, a_severity_without_a_type_is_not_empty)
{
    EXPECT_FALSE(make_message(L"", message_t::error)->empty());
}

TEST(message_test, a_type_without_a_severity_is_not_empty)
{
    EXPECT_FALSE(make_message(L"file_large")->empty());
}

TEST(message_test, a_message_with_only_content_and_flags_is_empty)
{
    message_t message;
    message.set_content(make_content({{L"tool", L"x"}}, {{L"a", L"1"}}, {{L"e", L"2"}}));
    message.set_flags(3);
    EXPECT_TRUE(message.empty());
}

TEST(message_test, the_severities_have_their_numbers)
{
    EXPECT_EQ(message_t::none, 0);
    EXPECT_EQ(message_t::info, 1);
    EXPECT_EQ(message_t::warning, 2);
    EXPECT_EQ(message_t::error, 3);
    EXPECT_EQ(message_t::critical, 4);
}

TEST(message_test, a_severity_without_a_name_is_kept)
{
    for (const int value :
         {-1, 5, 1000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        message_t message;
        message.set_severity(static_cast<message_t::severity_t>(value));
        EXPECT_EQ(message.get_severity(), value);
        EXPECT_FALSE(message.empty()) << value;
    }
}

TEST(message_test, the_flags_are_kept_as_they_are)
{
    for (const int flags : {0, 1, 2, 3, 4, 8, -1, std::numeric_limits<int>::min()}) {
        message_t message;
        message.set_flags(flags);
        EXPECT_EQ(message.get_flags(), flags);
    }
}

TEST(message_test, a_type_is_neither_trimmed_nor_folded)
{
    const std::wstring type = L" File\tLARGE \x00E9" + units({0, 0xD800, 0x1F600});
    EXPECT_EQ(make_message(type)->get_type(), type);
}

TEST(message_test, the_first_source_stays)
{
    message_t message;
    message.set_source(L"a");
    message.set_source(L"b");
    EXPECT_EQ(message.get_source(), L"a");
}

TEST(message_test, an_empty_source_stays_too)
{
    message_t message;
    message.set_source(L"");
    message.set_source(L"b");
    EXPECT_EQ(message.get_source(), L"");
}

TEST(message_test, the_source_is_the_attribute_tool)
{
    message_t message;
    message.set_source(L"a");
    EXPECT_EQ(message.get_content().attributes, (string_map_t{{L"tool", L"a"}}));
}

TEST(message_test, the_attribute_source_is_preferred_to_tool)
{
    EXPECT_EQ(make_message(make_content({{L"source", L"x"}, {L"tool", L"y"}}))->get_source(), L"x");
}

TEST(message_test, an_empty_attribute_source_is_preferred_too)
{
    EXPECT_EQ(make_message(make_content({{L"source", L""}, {L"tool", L"y"}}))->get_source(), L"");
}

TEST(message_test, the_source_is_replaced_through_the_content)
{
    message_t message;
    message.set_source(L"a");
    message.set_content(make_content({{L"tool", L"b"}}));
    EXPECT_EQ(message.get_source(), L"b");
}

TEST(message_test, setting_the_content_replaces_all_of_it)
{
    message_t message;
    message.set_content(make_content({{L"a", L"1"}}, {{L"b", L"2"}}, {{L"c", L"3"}}));
    message_t::message_content_t content;
    content.next_arg_number = 7;
    message.set_content(content);
    EXPECT_TRUE(message.get_content().attributes.empty());
    EXPECT_TRUE(message.get_content().args.empty());
    EXPECT_TRUE(message.get_content().elements.empty());
    EXPECT_EQ(message.get_content().next_arg_number, 7);
}

TEST(message_test, get_content_returns_a_copy)
{
    message_t message;
    message.set_content(make_content({}, {{L"a", L"1"}}));
    message.get_content().args[L"a"] = L"2";
    EXPECT_EQ(message.get_content().args[L"a"], L"1");
}

TEST(message_test, the_content_keeps_its_keys_in_code_unit_order)
{
    const string_map_t args = {
        {L"b", L""}, {L"a", L""}, {L"aa", L""}, {L"B", L""}, {L"\x00E9", L""}};
    std::vector<std::wstring> keys;
    for (const auto& arg : make_message(make_content({}, args))->get_content().args)
        keys.push_back(arg.first);
    EXPECT_EQ(keys, (std::vector<std::wstring>{L"B", L"a", L"aa", L"b", L"\x00E9"}));
}

TEST(message_test, equal_messages_have_the_same_type_and_severity)
{
    EXPECT_TRUE(make_message(L"t", message_t::info)->equal_to(make_message(L"t", message_t::info)));
}

TEST(message_test, no_message_equals_null)
{
    EXPECT_FALSE(message_t().equal_to(message_ptr_t()));
}

TEST(message_test, content_flags_and_source_do_not_matter_to_equality)
{
    const auto one = make_message(L"t", message_t::error);
    const auto other = make_message(L"t", message_t::error);
    other->set_content(make_content({}, {{L"a", L"1"}}));
    other->set_source(L"x");
    other->set_flags(1);
    EXPECT_TRUE(one->equal_to(other));
    EXPECT_TRUE(other->equal_to(one));
}

TEST(message_test, messages_with_different_types_or_severities_are_not_equal)
{
    const auto message = make_message(L"type", message_t::info);
    EXPECT_FALSE(message->equal_to(make_message(L"Type", message_t::info)));
    EXPECT_FALSE(message->equal_to(make_message(L"type2", message_t::info)));
    EXPECT_FALSE(message->equal_to(make_message(L"typ", message_t::info)));
    EXPECT_FALSE(message->equal_to(make_message(L"type" + units({0}), message_t::info)));
    EXPECT_FALSE(message->equal_to(make_message(L"type", message_t::warning)));
}

class copied_message_test : public testing::TestWithParam<bool>
{
protected:
    static message_t make_original()
    {
        message_t original;
        original.set_type(L"t");
        original.set_severity(message_t::critical);
        original.set_flags(5);
        auto content = make_content({{L"tool", L"s"}}, {{L"a", L"1"}}, {{L"e", L"2"}});
        content.next_arg_number = 9;
        original.set_content(content);
        return original;
    }

    static message_t copy(const message_t& original)
    {
        if (GetParam())
            return message_t(original);
        message_t assigned;
        message_t& result = assigned = original;
        EXPECT_EQ(&result, &assigned);
        return result;
    }
};

INSTANTIATE_TEST_SUITE_P(constructed_and_assigned, copied_message_test, testing::Bool());

TEST_P(copied_message_test, has_every_part)
{
    const message_t copied = copy(make_original());
    EXPECT_EQ(copied.get_type(), L"t");
    EXPECT_EQ(copied.get_severity(), message_t::critical);
    EXPECT_EQ(copied.get_flags(), 5);
    EXPECT_EQ(copied.get_content().args, (string_map_t{{L"a", L"1"}}));
    EXPECT_EQ(copied.get_content().attributes, (string_map_t{{L"tool", L"s"}}));
    EXPECT_EQ(copied.get_content().elements, (string_map_t{{L"e", L"2"}}));
    EXPECT_EQ(copied.get_content().next_arg_number, 9);
}

TEST_P(copied_message_test, leaves_the_original_as_it_is_when_changed)
{
    const message_t original = make_original();
    message_t copied = copy(original);
    copied.set_content(make_content({}, {{L"a", L"changed"}}));
    copied.set_type(L"changed");
    EXPECT_EQ(original.get_content().args, (string_map_t{{L"a", L"1"}}));
    EXPECT_EQ(original.get_type(), L"t");
}

TEST(message_test, a_message_assigned_to_itself_stays_as_it_is)
{
    auto message = make_message(make_content({}, {{L"a", L"1"}}));
    const message_t& same = *message;
    *message = same;
    EXPECT_EQ(message->get_content().args, (string_map_t{{L"a", L"1"}}));
}

TEST(message_test, a_derived_message_is_destroyed_through_its_base)
{
    struct derived_t : message_t
    {
        explicit derived_t(bool& destroyed) : m_destroyed(destroyed) {}
        ~derived_t() override { m_destroyed = true; }
        bool& m_destroyed;
    };
    bool destroyed = false;
    std::unique_ptr<message_t> message(new derived_t(destroyed));
    message.reset();
    EXPECT_TRUE(destroyed);
}

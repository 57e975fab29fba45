#include <rova/variant.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using ROVA_2_18::types::variant;
using namespace std::string_literals;

std::string text_of(const variant& value)
{
    return value.as_string();
}

TEST(rova_variant_test, a_default_value_is_an_empty_text)
{
    EXPECT_EQ(variant().as_string(), "");
}

TEST(rova_variant_test, a_text_converts_implicitly_to_a_value)
{
    EXPECT_EQ(text_of(L"C:\\temp"s), "C:\\temp");
}

TEST(rova_variant_test, the_text_is_returned_as_utf8)
{
    const struct
    {
        std::wstring text;
        std::string bytes;
    } rows[] = {
        {L""s, ""s},
        {L"ma\xDFlos 5\x20AC"s, "ma\xC3\x9Flos 5\xE2\x82\xAC"s},
        {L"\xD83D\xDE00"s, "\xF0\x9F\x98\x80"s},
        {L"\U0001F600"s, "\xF0\x9F\x98\x80"s},
        {L"a\xD83D"s, "a\xEF\xBF\xBD"s},
        {L"a\0b"s, "a\0b"s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(variant(row.text).as_string(), row.bytes) << testing::PrintToString(row.text);
    }
}

TEST(rova_variant_test, a_value_owns_its_text)
{
    std::wstring text = L"before";
    const variant value(text);
    text = L"after";
    EXPECT_EQ(value.as_string(), "before");
}

TEST(rova_variant_test, a_copy_keeps_its_text_when_the_original_changes)
{
    variant original(L"first"s);
    const variant copy(original);
    original = L"second"s;
    EXPECT_EQ(copy.as_string(), "first");
    EXPECT_EQ(original.as_string(), "second");
}

} // namespace

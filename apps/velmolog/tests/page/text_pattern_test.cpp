#include "text_pattern.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

using velmolog::text_pattern;

/// Returns the text of a pattern, as the page composes it.
static std::string filled(const std::string& pattern, const std::vector<std::string>& values)
{
    std::string text;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != '\x7F') {
            text += pattern[i];
            continue;
        }
        const char which = pattern.at(++i);
        text += which == '~' ? "\x7F" : values.at(static_cast<std::size_t>(which - 'a'));
        EXPECT_EQ('\x7F', pattern.at(++i));
    }
    return text;
}

TEST(text_pattern_test, texts_with_other_values_are_one_pattern)
{
    EXPECT_EQ("\x7F"
              "b\x7F is larger than \x7F"
              "a\x7F, \x7F"
              "b\x7F!",
              text_pattern("/tmp/x is larger than 4096, /tmp/x!", {"4096", "/tmp/x"}));
}

TEST(text_pattern_test, short_values_remain)
{
    EXPECT_EQ("a b 123", text_pattern("a b 123", {"", "a", "123"}));
}

TEST(text_pattern_test, the_cost_has_a_bound)
{
    const std::string long_text(10001, 'x');
    EXPECT_EQ(long_text, text_pattern(long_text, {"xxxx"}));
    const std::string long_value(501, 'x');
    EXPECT_EQ(long_value, text_pattern(long_value, {long_value}));
    EXPECT_EQ("last", text_pattern("last", {"1", "2", "3", "4", "5", "6", "7", "8", "last"}));
}

TEST(text_pattern_test, each_pattern_is_filled_to_its_text)
{
    // The same texts in each run.
    std::minstd_rand random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp)
    const auto random_text = [&](std::size_t size) {
        std::string text;
        for (; size != 0; --size)
            text += "aaaabbbb~\x7F\x7F\x7F"[random() % 12];
        return text;
    };
    std::size_t replaced = 0;
    for (std::size_t i = 0; i < 20000; ++i) {
        const std::vector<std::string> values = {random_text(4), random_text(5), random_text(4)};
        const std::string text = random_text(3) + values[i % 3] + random_text(random() % 40);
        const std::string pattern = text_pattern(text, values);
        ASSERT_EQ(text, filled(pattern, values));
        replaced += pattern.find("\x7F"
                                 "b\x7F") != std::string::npos
                        ? 1
                        : 0;
    }
    EXPECT_GT(replaced, 1000U);
}

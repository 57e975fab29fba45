#include "glob.h"

#include "random_source.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

using velmolog::glob_t;

namespace
{

bool matches(const std::string& pattern, const std::string& text)
{
    return glob_t(pattern).matches(text);
}

/// Compares a pattern of `*`, `?` and letters with a text in all ways.
bool has_match(const std::string& pattern, const std::string& text)
{
    std::vector<bool> is_reached(text.size() + 1);
    is_reached[0] = true;
    for (const char element : pattern) {
        std::vector<bool> next(text.size() + 1);
        for (std::size_t i = 0; i <= text.size(); ++i) {
            if (element == '*')
                next[i] = is_reached[i] || (i != 0 && next[i - 1]);
            else if (i != 0)
                next[i] = is_reached[i - 1] && (element == '?' || element == text[i - 1]);
        }
        is_reached = next;
    }
    return is_reached[text.size()];
}

std::string random_letters(random_source_t& random, const std::string& letters)
{
    std::string text;
    for (std::size_t size = random.below(9); size != 0; --size)
        text += letters[random.below(letters.size())];
    return text;
}

} // namespace

TEST(glob_test, a_text_matches_itself_only)
{
    EXPECT_TRUE(matches("file_large", "file_large"));
    EXPECT_FALSE(matches("file_large", "file_larger"));
    EXPECT_FALSE(matches("file_large", "a file_large"));
    EXPECT_FALSE(matches("file_large", "File_large"));
    EXPECT_TRUE(matches("", ""));
    EXPECT_FALSE(matches("", "a"));
}

TEST(glob_test, a_question_mark_is_one_character_of_unicode)
{
    EXPECT_TRUE(matches("?", "\u00E9"));
    EXPECT_TRUE(matches("?", "\U0001F600"));
    EXPECT_TRUE(matches("\uFFFD", "\xFF"));
    EXPECT_FALSE(matches("?", ""));
    EXPECT_FALSE(matches("?", "ab"));
}

TEST(glob_test, a_set_has_characters_and_ranges)
{
    EXPECT_TRUE(matches("[abx-z]", "y"));
    EXPECT_FALSE(matches("[abx-z]", "c"));
    EXPECT_TRUE(matches("[\u00E0-\u00EF]", "\u00E9"));
    EXPECT_TRUE(matches("[!a]", "b"));
    EXPECT_TRUE(matches("[^a]", "b"));
    EXPECT_FALSE(matches("[!a]", "a"));
    EXPECT_TRUE(matches("[]a]", "]"));
    EXPECT_TRUE(matches("[!]]", "a"));
    EXPECT_TRUE(matches("[^]]", "a"));
    EXPECT_TRUE(matches("[a-]", "-"));
    EXPECT_TRUE(matches("[\\]\\-a]", "-"));
    EXPECT_FALSE(matches("[z-a]", "m"));
}

TEST(glob_test, a_bracket_without_an_end_is_itself)
{
    EXPECT_TRUE(matches("[a", "[a"));
    EXPECT_TRUE(matches("[", "["));
    EXPECT_TRUE(matches("[!]", "[!]"));
    EXPECT_TRUE(matches("[^]", "[^]"));
    EXPECT_TRUE(matches("[a\\]", "[a]"));
}

TEST(glob_test, a_backslash_makes_a_wildcard_an_ordinary_character)
{
    EXPECT_TRUE(matches("\\*", "*"));
    EXPECT_FALSE(matches("\\*", "a"));
    EXPECT_TRUE(matches("a\\", "a\\"));
    EXPECT_TRUE(glob_t("a\\*b").is_literal());
    EXPECT_EQ(glob_t("a\\*\u00E9\U0001F600").literal(), "a*\u00E9\U0001F600");
    EXPECT_EQ(glob_t("\u0800\uFFFF\U00010000").literal(), "\u0800\uFFFF\U00010000");
    EXPECT_FALSE(glob_t("[a]").is_literal());
    EXPECT_FALSE(glob_t("a*").is_literal());
    EXPECT_FALSE(glob_t("a?").is_literal());
}

TEST(glob_test, random_patterns_match_what_a_complete_search_finds)
{
    const random_seeds_t seeds(20000);
    std::size_t count = 0;
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        random_source_t random(seed);
        const std::string pattern = random_letters(random, "ab**?");
        const std::string text = random_letters(random, "ab");
        count += has_match(pattern, text) ? 1 : 0;
        ASSERT_EQ(matches(pattern, text), has_match(pattern, text)) << pattern << " " << text;
    }
    EXPECT_GT(count, seeds.count / 20);
}

TEST(glob_test, many_wildcards_cost_no_more_than_pattern_times_text)
{
    std::string pattern;
    for (int i = 0; i != 1000; ++i)
        pattern += "*a";
    const std::string text(100000, 'a');
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(matches(pattern + "*b", text));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

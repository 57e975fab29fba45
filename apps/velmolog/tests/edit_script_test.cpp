#include "edit_script.h"

#include "random_source.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

using velmolog::compare;
using velmolog::edit_script_t;

namespace
{

typedef std::vector<std::uint32_t> sequence_t;

std::size_t count_of(const std::vector<bool>& marks)
{
    return static_cast<std::size_t>(std::count(marks.begin(), marks.end(), true));
}

sequence_t without(const sequence_t& sequence, const std::vector<bool>& marks)
{
    sequence_t rest;
    for (std::size_t i = 0; i != sequence.size(); ++i)
        if (!marks.at(i))
            rest.push_back(sequence[i]);
    return rest;
}

/// Returns the size of a longest common subsequence.
std::size_t common_size(const sequence_t& left, const sequence_t& right)
{
    std::vector<std::size_t> sizes(right.size() + 1);
    for (const std::uint32_t element : left) {
        std::size_t diagonal = 0;
        for (std::size_t i = 0; i != right.size(); ++i) {
            const std::size_t above = sizes[i + 1];
            sizes[i + 1] = element == right[i] ? diagonal + 1 : std::max(above, sizes[i]);
            diagonal = above;
        }
    }
    return sizes.back();
}

sequence_t random_sequence(random_source_t& random, std::size_t most, std::size_t elements)
{
    sequence_t sequence(random.below(most + 1));
    for (std::uint32_t& element : sequence)
        element = static_cast<std::uint32_t>(random.below(elements));
    return sequence;
}

} // namespace

TEST(edit_script_test, equal_sequences_have_no_differences)
{
    const edit_script_t script = compare({1, 2, 3}, {1, 2, 3});
    EXPECT_EQ(count_of(script.is_removed), 0U);
    EXPECT_EQ(count_of(script.is_added), 0U);
    EXPECT_TRUE(compare({}, {}).is_in_order);
}

TEST(edit_script_test, random_sequences_have_the_fewest_differences)
{
    const random_seeds_t seeds(5000);
    for (auto seed = seeds.first; seed != seeds.end(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        random_source_t random(seed);
        const std::size_t most = random.one_in(20) ? 200 : 12;
        const std::size_t elements = random.between(1, 8);
        const sequence_t left = random_sequence(random, most, elements);
        const sequence_t right = random_sequence(random, most, elements);
        const edit_script_t script = compare(left, right);
        ASSERT_TRUE(script.is_in_order);
        const sequence_t rest = without(left, script.is_removed);
        ASSERT_EQ(rest, without(right, script.is_added));
        ASSERT_EQ(rest.size(), common_size(left, right));
    }
}

TEST(edit_script_test, without_steps_elements_count_regardless_of_their_order)
{
    const edit_script_t script = compare({1, 2, 3, 3, 5}, {3, 2, 1, 4}, 1);
    EXPECT_FALSE(script.is_in_order);
    EXPECT_EQ(script.is_removed, std::vector<bool>({false, false, false, true, true}));
    EXPECT_EQ(script.is_added, std::vector<bool>({false, false, false, true}));
}

TEST(edit_script_test, sequences_without_a_common_element_need_no_steps)
{
    sequence_t left(1000000);
    sequence_t right(1000000);
    std::iota(left.begin(), left.end(), 0);
    std::iota(right.begin(), right.end(), 1000000);
    const edit_script_t script = compare(left, right, 1);
    EXPECT_TRUE(script.is_in_order);
    EXPECT_EQ(count_of(script.is_removed), left.size());
    EXPECT_EQ(count_of(script.is_added), right.size());
}

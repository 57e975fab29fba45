#include "edit_script.h"

#include "comparison.h"

#include <algorithm>

namespace velmolog
{
namespace
{

typedef comparison_t::sequence_t sequence_t;

/// The elements of one sequence that the other one has too, and their indices.
struct shared_t
{
    sequence_t elements;
    std::vector<std::size_t> indices;
};

std::vector<std::size_t> counts_of(const sequence_t& sequence, std::size_t size)
{
    std::vector<std::size_t> counts(size);
    for (const std::uint32_t element : sequence)
        ++counts[element];
    return counts;
}

/// Marks the elements that the other sequence lacks, and returns the others.
shared_t split(const sequence_t& sequence, const std::vector<std::size_t>& other_counts,
               std::vector<bool>& is_marked)
{
    shared_t shared;
    for (std::size_t i = 0; i != sequence.size(); ++i) {
        is_marked[i] = other_counts[sequence[i]] == 0;
        if (!is_marked[i]) {
            shared.elements.push_back(sequence[i]);
            shared.indices.push_back(i);
        }
    }
    return shared;
}

/// Marks each element that appears more often than in the other sequence.
void mark_excess(const sequence_t& sequence, std::vector<std::size_t> other_counts,
                 std::vector<bool>& is_marked)
{
    for (std::size_t i = 0; i != sequence.size(); ++i) {
        std::size_t& count = other_counts[sequence[i]];
        is_marked[i] = count == 0;
        count -= std::min<std::size_t>(count, 1);
    }
}

void copy_marks(const std::vector<bool>& marks, const shared_t& shared,
                std::vector<bool>& is_marked)
{
    for (std::size_t i = 0; i != marks.size(); ++i)
        is_marked[shared.indices[i]] = marks[i];
}

} // namespace

edit_script_t compare(const std::vector<std::uint32_t>& left,
                      const std::vector<std::uint32_t>& right, std::size_t max_steps)
{
    std::uint32_t largest = 0;
    for (const auto* const sequence : {&left, &right})
        for (const std::uint32_t element : *sequence)
            largest = std::max(largest, element);
    const auto left_counts = counts_of(left, std::size_t(largest) + 1);
    const auto right_counts = counts_of(right, std::size_t(largest) + 1);
    edit_script_t script;
    script.is_removed.resize(left.size());
    script.is_added.resize(right.size());
    // No shortest script pairs these elements, and they would be most of the work.
    const shared_t shared_left = split(left, right_counts, script.is_removed);
    const shared_t shared_right = split(right, left_counts, script.is_added);
    comparison_t comparison(shared_left.elements, shared_right.elements, max_steps);
    script.is_in_order = comparison.run();
    if (script.is_in_order) {
        copy_marks(comparison.is_removed(), shared_left, script.is_removed);
        copy_marks(comparison.is_added(), shared_right, script.is_added);
    } else {
        mark_excess(left, right_counts, script.is_removed);
        mark_excess(right, left_counts, script.is_added);
    }
    return script;
}

} // namespace velmolog

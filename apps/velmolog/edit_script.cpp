#include "edit_script.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace velmolog
{
namespace
{

typedef std::int64_t index_t;
typedef std::vector<std::uint32_t> sequence_t;

/// A part of both sequences: [left_begin, left_end) and [right_begin, right_end).
struct part_t
{
    index_t left_begin;
    index_t left_end;
    index_t right_begin;
    index_t right_end;

    index_t left_size() const { return left_end - left_begin; }
    index_t right_size() const { return right_end - right_begin; }
};

/// The farthest position on each diagonal that some number of differences reaches.
///
/// Diagonal k has the positions x, x - k. One is -1 if it is not reached.
class frontier_t
{
public:
    explicit frontier_t(std::size_t size) : m_positions(size, unreached) {}

    void reset(index_t right_size) { m_zero = right_size + 1; }
    index_t& operator[](index_t diagonal)
    {
        return m_positions[static_cast<std::size_t>(m_zero + diagonal)];
    }

    static constexpr index_t unreached = -1;

private:
    std::vector<index_t> m_positions;
    index_t m_zero = 0;
};

/// Finds the fewest differences with E. Myers' algorithm in linear space ("An O(ND) difference
/// algorithm and its variations", 1986): searches from both ends, and divides at their meeting.
class comparison_t
{
public:
    comparison_t(const sequence_t& left, const sequence_t& right, std::size_t max_steps)
        : m_left(left), m_right(right), m_steps_left(max_steps),
          m_forward(left.size() + right.size() + 3), m_backward(left.size() + right.size() + 3),
          m_is_removed(left.size()), m_is_added(right.size())
    {}

    /// Returns whether the steps were enough.
    bool run()
    {
        return compare(
            {0, static_cast<index_t>(m_left.size()), 0, static_cast<index_t>(m_right.size())});
    }

    const std::vector<bool>& is_removed() const { return m_is_removed; }
    const std::vector<bool>& is_added() const { return m_is_added; }

private:
    typedef std::pair<index_t, index_t> point_t; ///< relative to the part

    bool equal(index_t left, index_t right) const
    {
        return m_left[static_cast<std::size_t>(left)] == m_right[static_cast<std::size_t>(right)];
    }

    // Each level halves the differences, so the recursion is not deep.
    bool compare(part_t part)
    {
        trim(part);
        if (part.left_size() == 0 || part.right_size() == 0) {
            mark(m_is_removed, part.left_begin, part.left_end);
            mark(m_is_added, part.right_begin, part.right_end);
            return true;
        }
        const auto middle = find_middle(part);
        if (!middle)
            return false;
        const index_t left = part.left_begin + middle->first;
        const index_t right = part.right_begin + middle->second;
        return compare({part.left_begin, left, part.right_begin, right}) &&
               compare({left, part.left_end, right, part.right_end});
    }

    void trim(part_t& part) const
    {
        while (part.left_size() != 0 && part.right_size() != 0 &&
               equal(part.left_begin, part.right_begin)) {
            ++part.left_begin;
            ++part.right_begin;
        }
        while (part.left_size() != 0 && part.right_size() != 0 &&
               equal(part.left_end - 1, part.right_end - 1)) {
            --part.left_end;
            --part.right_end;
        }
    }

    static void mark(std::vector<bool>& marks, index_t begin, index_t end)
    {
        for (; begin != end; ++begin)
            marks[static_cast<std::size_t>(begin)] = true;
    }

    /// Returns a point through which a shortest path goes; nothing if there are no steps left.
    std::optional<point_t> find_middle(const part_t& part)
    {
        m_forward.reset(part.right_size());
        m_backward.reset(part.right_size());
        for (index_t differences = 0;; ++differences) {
            if (const auto point = advance(part, differences, true))
                return point;
            if (const auto point = advance(part, differences, false))
                return point;
            if (m_steps_left == 0)
                return std::nullopt;
        }
    }

    /// Extends one search by a difference. Returns the point at which it meets the other one.
    std::optional<point_t> advance(const part_t& part, index_t differences, bool is_forward)
    {
        frontier_t& own = is_forward ? m_forward : m_backward;
        frontier_t& other = is_forward ? m_backward : m_forward;
        const index_t width = part.left_size();
        const index_t height = part.right_size();
        const index_t low = std::max(-differences, -height - ((differences - height) & 1));
        const index_t high = std::min(differences, width + ((differences - width) & 1));
        // The other search has taken as many steps if it comes first, else one less.
        const index_t reach = is_forward ? differences - 1 : differences;
        for (index_t diagonal = low; diagonal <= high; diagonal += 2) {
            if (diagonal < -height || diagonal > width)
                continue;
            const index_t x = step(part, own, diagonal, differences, is_forward);
            own[diagonal] = x;
            const index_t opposite = width - height - diagonal;
            if (x == frontier_t::unreached || opposite < -reach || opposite > reach ||
                ((opposite - reach) & 1) != 0)
                continue;
            const index_t met = other[opposite];
            if (met != frontier_t::unreached && x + met >= width)
                return is_forward ? point_t(x, x - diagonal)
                                  : point_t(width - x, height - (x - diagonal));
        }
        return std::nullopt;
    }

    /// Returns the farthest position on a diagonal with so many differences.
    index_t step(const part_t& part, frontier_t& own, index_t diagonal, index_t differences,
                 bool is_forward)
    {
        index_t x = 0;
        if (differences != 0) {
            // The other diagonals have the positions of an earlier part.
            const index_t first = std::max(1 - differences, -part.right_size());
            const index_t last = std::min(differences - 1, part.left_size());
            const index_t from_left = diagonal > first ? own[diagonal - 1] : -1;
            const index_t from_above = diagonal < last ? own[diagonal + 1] : -1;
            const bool can_go_right = from_left >= 0 && from_left < part.left_size();
            const bool can_go_down = from_above >= 0 && from_above - diagonal <= part.right_size();
            x = std::max(can_go_right ? from_left + 1 : -1, can_go_down ? from_above : -1);
        }
        return x < 0 ? frontier_t::unreached : follow(part, x, x - diagonal, is_forward);
    }

    /// Follows equal elements from a point.
    index_t follow(const part_t& part, index_t x, index_t y, bool is_forward)
    {
        const index_t begin = x;
        if (is_forward)
            while (x < part.left_size() && y < part.right_size() &&
                   equal(part.left_begin + x, part.right_begin + y)) {
                ++x;
                ++y;
            }
        else
            while (x < part.left_size() && y < part.right_size() &&
                   equal(part.left_end - 1 - x, part.right_end - 1 - y)) {
                ++x;
                ++y;
            }
        m_steps_left -= std::min(m_steps_left, static_cast<std::size_t>(x - begin) + 1);
        return x;
    }

    const sequence_t& m_left;
    const sequence_t& m_right;
    std::size_t m_steps_left;
    frontier_t m_forward;
    frontier_t m_backward;
    std::vector<bool> m_is_removed;
    std::vector<bool> m_is_added;
};

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

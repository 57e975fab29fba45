#include "comparison.h"

#include <algorithm>

namespace velmolog
{
namespace
{

void mark(std::vector<bool>& marks, std::int64_t begin, std::int64_t end)
{
    for (; begin != end; ++begin)
        marks[static_cast<std::size_t>(begin)] = true;
}

} // namespace

comparison_t::comparison_t(const sequence_t& left, const sequence_t& right, std::size_t max_steps)
    : m_left(left), m_right(right), m_steps_left(max_steps),
      m_forward(left.size() + right.size() + 3), m_backward(left.size() + right.size() + 3),
      m_is_removed(left.size()), m_is_added(right.size())
{}

bool comparison_t::run()
{
    return compare(
        {0, static_cast<index_t>(m_left.size()), 0, static_cast<index_t>(m_right.size())});
}

// Each level halves the differences, so the recursion is not deep.
bool comparison_t::compare(part_t part)
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

void comparison_t::trim(part_t& part) const
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

// Returns a point through which a shortest path goes; nothing if there are no steps left.
std::optional<comparison_t::point_t> comparison_t::find_middle(const part_t& part)
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

// Extends one search by a difference. Returns the point at which it meets the other one.
std::optional<comparison_t::point_t> comparison_t::advance(const part_t& part, index_t differences,
                                                           bool is_forward)
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

// Returns the farthest position on a diagonal with so many differences.
comparison_t::index_t comparison_t::step(const part_t& part, frontier_t& own, index_t diagonal,
                                         index_t differences, bool is_forward)
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

// Follows equal elements from a point.
comparison_t::index_t comparison_t::follow(const part_t& part, index_t x, index_t y,
                                           bool is_forward)
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

bool comparison_t::equal(index_t left, index_t right) const
{
    return m_left[static_cast<std::size_t>(left)] == m_right[static_cast<std::size_t>(right)];
}

} // namespace velmolog

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace velmolog
{

/// The farthest position on each diagonal that some number of differences reaches.
///
/// Diagonal k has the positions x, x - k. One is -1 if it is not reached.
class frontier_t
{
public:
    typedef std::int64_t index_t;

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
    typedef std::vector<std::uint32_t> sequence_t;

    /// The sequences must outlive the object.
    comparison_t(const sequence_t& left, const sequence_t& right, std::size_t max_steps);

    /// Returns whether the steps were enough.
    bool run();

    const std::vector<bool>& is_removed() const { return m_is_removed; }
    const std::vector<bool>& is_added() const { return m_is_added; }

private:
    typedef std::int64_t index_t;
    typedef std::pair<index_t, index_t> point_t; ///< relative to a part

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

    bool compare(part_t part);
    void trim(part_t& part) const;
    std::optional<point_t> find_middle(const part_t& part);
    std::optional<point_t> advance(const part_t& part, index_t differences, bool is_forward);
    index_t step(const part_t& part, frontier_t& own, index_t diagonal, index_t differences,
                 bool is_forward);
    index_t follow(const part_t& part, index_t x, index_t y, bool is_forward);
    bool equal(index_t left, index_t right) const;

    const sequence_t& m_left;
    const sequence_t& m_right;
    std::size_t m_steps_left;
    frontier_t m_forward;
    frontier_t m_backward;
    std::vector<bool> m_is_removed;
    std::vector<bool> m_is_added;
};

} // namespace velmolog

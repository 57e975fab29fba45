#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmolog
{

/// The differences of two sequences.
struct edit_script_t
{
    std::vector<bool> is_removed; ///< for each element of the first sequence, if it lacks a partner
    std::vector<bool> is_added;   ///< for each element of the second one
    /// False if the sequences differ too much: then elements that were only moved have partners.
    bool is_in_order = true;
};

/// Returns the fewest differences. Equal numbers are equal elements. Needs memory for both
/// sequences, and at most `max_steps` comparisons, beyond which is_in_order is false.
edit_script_t compare(const std::vector<std::uint32_t>& left,
                      const std::vector<std::uint32_t>& right, std::size_t max_steps = 100000000);

} // namespace velmolog

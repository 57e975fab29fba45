#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace velmolog
{

/// Counts names. Needs a bounded memory: names that appear when there are very many are counted
/// together.
class name_counter_t
{
public:
    typedef std::pair<std::string, std::uint64_t> count_t;

    static constexpr std::size_t max_names = 10000;
    static constexpr std::size_t max_bytes = 4194304; ///< of all names

    void add(std::string_view name);

    /// Returns the names with their counts: the most frequent ones first, others by their bytes.
    std::vector<count_t> sorted() const;
    /// Returns the number of further names, each as often as it was added.
    std::uint64_t others() const { return m_others; }

private:
    std::deque<std::string> m_names; ///< owns the keys
    std::unordered_map<std::string_view, std::uint64_t> m_counts;
    std::size_t m_bytes = 0;
    std::uint64_t m_others = 0;
};

} // namespace velmolog

#include "name_counter.h"

#include <algorithm>

namespace velmolog
{

void name_counter_t::add(std::string_view name)
{
    const auto known = m_counts.find(name);
    if (known != m_counts.end()) {
        ++known->second;
        return;
    }
    if (m_names.size() == max_names || name.size() > max_bytes - m_bytes) {
        ++m_others;
        return;
    }
    m_bytes += name.size();
    m_counts.emplace(m_names.emplace_back(name), 1);
}

std::vector<name_counter_t::count_t> name_counter_t::sorted() const
{
    std::vector<count_t> counts(m_counts.begin(), m_counts.end());
    std::sort(counts.begin(), counts.end(), [](const count_t& left, const count_t& right) {
        return left.second != right.second ? left.second > right.second : left.first < right.first;
    });
    return counts;
}

} // namespace velmolog

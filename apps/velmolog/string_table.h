#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace velmolog
{

/// Distinct texts, numbered in the order of their first use.
class string_table_t
{
public:
    /// Returns the number of the text, from 0. Adds the text if it is new.
    std::size_t number_of(const std::string& text)
    {
        const auto [entry, is_new] = m_numbers.try_emplace(text, m_texts.size());
        if (is_new)
            m_texts.push_back(&entry->first);
        return entry->second;
    }

    /// Returns the texts in the order of their numbers. They are valid as long as the table.
    const std::vector<const std::string*>& texts() const { return m_texts; }

private:
    std::unordered_map<std::string, std::size_t> m_numbers;
    std::vector<const std::string*> m_texts; ///< the keys of the map, which are never moved
};

} // namespace velmolog

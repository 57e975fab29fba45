#pragma once

#include "options.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <utility>

namespace velmolog
{

/// Passes on the first or the last items, as --first and --last ask for, or all.
template <typename Item>
class window_t
{
public:
    typedef std::function<void(const Item&)> sink_t;

    window_t(const options_t& options, sink_t sink)
        : m_first(options.first), m_last(options.last), m_sink(std::move(sink))
    {}

    /// Returns whether more items are wanted.
    bool add(Item item)
    {
        if (m_last)
            keep(std::move(item));
        else if (!m_first || m_count < *m_first)
            m_sink(item);
        ++m_count;
        return !m_first || m_count < *m_first;
    }

    /// Passes on the last items.
    void finish()
    {
        for (const Item& item : m_kept)
            m_sink(item);
        m_kept.clear();
    }

private:
    void keep(Item item)
    {
        m_kept.push_back(std::move(item));
        if (m_kept.size() > *m_last)
            m_kept.pop_front();
    }

    std::optional<std::size_t> m_first;
    std::optional<std::size_t> m_last;
    sink_t m_sink;
    std::size_t m_count = 0;
    std::deque<Item> m_kept;
};

} // namespace velmolog

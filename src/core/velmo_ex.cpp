#include <velmoext1/velmo_ex.h>

#include <boost/thread/lock_guard.hpp>

#include <iterator>
#include <utility>

namespace velmoext_1_4_8
{

boost::mutex velmo_ex_t::m_global_mutex;
velmo_ex_t::registry_t velmo_ex_t::m_active_velmo_exs;
velmo_ex_t::entries_t velmo_ex_t::m_expired_entries;
std::int32_t velmo_ex_t::m_id_counter = 0;

boost::shared_ptr<velmo_ex_t> velmo_ex_t::get(const std::wstring& id, const std::wstring& prefix)
{
    const boost::lock_guard<boost::mutex> lock(m_global_mutex);
    const auto found = m_active_velmo_exs.find(id);
    if (found != m_active_velmo_exs.end())
        return found->second.lock();

    // The object learns of its entry last: one that dies on the way here leaves the registry, which
    // is locked, alone.
    boost::shared_ptr<velmo_ex_t> ex(new velmo_ex_t);
    ex->m_prefix = prefix;
    entries_t entry(1);
    entry.front() = m_active_velmo_exs.emplace(id, ex).first;
    ex->m_entry.swap(entry);
    return ex;
}

std::wstring velmo_ex_t::generate_id(const std::wstring& base)
{
    const boost::lock_guard<boost::mutex> lock(m_global_mutex);
    std::wstring id;
    do {
        id = base + std::to_wstring(m_id_counter);
        m_id_counter = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_id_counter) + 1U);
    } while (m_active_velmo_exs.count(id) != 0);
    return id;
}

velmo_ex_t::velmo_ex_t() = default;

velmo_ex_t::~velmo_ex_t()
{
    if (m_entry.empty())
        return;
    retire();
    drop_handlers();
    purge();
}

void velmo_ex_t::set_prefix(const std::wstring& prefix)
{
    m_prefix = prefix;
}

std::wstring velmo_ex_t::get_prefix()
{
    return m_prefix;
}

void velmo_ex_t::push_handler(boost::shared_ptr<base_handler_t> handler)
{
    const boost::lock_guard<boost::mutex> lock(m_mutex);
    m_handlers.push_back(std::move(handler));
}

boost::shared_ptr<base_handler_t> velmo_ex_t::pop_handler()
{
    const boost::lock_guard<boost::mutex> lock(m_mutex);
    if (m_handlers.empty())
        return boost::shared_ptr<base_handler_t>();
    boost::shared_ptr<base_handler_t> top = std::move(m_handlers.back());
    m_handlers.pop_back();
    return top;
}

void velmo_ex_t::dispatch_message(boost::shared_ptr<message_t> msg)
{
    const boost::lock_guard<boost::mutex> lock(m_mutex);
    if (m_handlers.empty())
        return;
    boost::shared_ptr<velmo_ex_t> self = shared_from_this();
    const auto bottom = m_handlers.begin();
    for (auto handler = std::prev(m_handlers.end()); handler != bottom; --handler)
        if ((*handler)->on_message(self, msg))
            return;
    (*bottom)->on_message(std::move(self), std::move(msg));
}

// Every entry that waits here is purged by whichever object dies next, without a walk through the
// entries of the living.
void velmo_ex_t::retire() noexcept
{
    const boost::lock_guard<boost::mutex> lock(m_global_mutex);
    m_expired_entries.splice(m_expired_entries.end(), m_entry);
}

void velmo_ex_t::drop_handlers() noexcept
{
    const boost::lock_guard<boost::mutex> lock(m_mutex);
    while (!m_handlers.empty())
        m_handlers.pop_front();
}

void velmo_ex_t::purge() noexcept
{
    const boost::lock_guard<boost::mutex> lock(m_global_mutex);
    for (const auto& entry : m_expired_entries)
        m_active_velmo_exs.erase(entry);
    m_expired_entries.clear();
}

} // namespace velmoext_1_4_8

#include <velmoext1/messages_storage.h>

#include "storage/messages_storage_impl.h"
#include "storage/storage_registry.h"

#include <boost/make_shared.hpp>

namespace velmoext_1_4_8
{

boost::shared_ptr<messages_storage_t> messages_storage_t::get(const basekit2::path_t& path)
{
    return storage_registry_t::get(path);
}

messages_storage_t::messages_storage_t(const basekit2::path_t& path)
    : m_impl(boost::make_shared<messages_storage_impl_t>(path))
{
    storage_registry_t::add(*this);
}

messages_storage_t::~messages_storage_t()
{
    {
        const boost::mutex::scoped_lock lock(m_mutex);
        m_impl->end();
    }
    storage_registry_t::remove(*this);
}

bool messages_storage_t::on_message(boost::shared_ptr<velmo_ex_t> ex,
                                    boost::shared_ptr<message_t> msg)
{
    const boost::mutex::scoped_lock lock(m_mutex);
    // Copies: the last owners of both are the parameters, which are destroyed after the lock.
    return m_impl->on_message(ex, msg);
}

bool messages_storage_t::start_recording()
{
    const boost::mutex::scoped_lock lock(m_mutex);
    return m_impl->start_recording();
}

bool messages_storage_t::stop_recording()
{
    const boost::mutex::scoped_lock lock(m_mutex);
    return m_impl->stop_recording();
}

bool messages_storage_t::start_reading()
{
    const boost::mutex::scoped_lock lock(m_mutex);
    return m_impl->start_reading();
}

bool messages_storage_t::replay(boost::shared_ptr<velmo_ex_t> ex)
{
    const boost::mutex::scoped_lock lock(m_mutex);
    return m_impl->replay(ex);
}

void messages_storage_t::stop_reading()
{
    const boost::mutex::scoped_lock lock(m_mutex);
    m_impl->stop_reading();
}

} // namespace velmoext_1_4_8

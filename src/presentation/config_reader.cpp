#include <velmoext1/config_reader.h>

#include "core/message_access.h"
#include "presentation/config_files.h"

#include <setbook2/product_locations.h>

#include <boost/make_shared.hpp>

#include <utility>

namespace velmoext_1_4_8
{

boost::mutex config_reader_t::m_creation_mutex;
boost::mutex config_reader_t::m_lookup_mutex;
boost::weak_ptr<config_reader_t> config_reader_t::m_current;

boost::shared_ptr<config_reader_t> config_reader_t::get()
{
    const boost::mutex::scoped_lock lock(m_creation_mutex);
    boost::shared_ptr<config_reader_t> reader = m_current.lock();
    if (!reader) {
        reader = boost::shared_ptr<config_reader_t>(new config_reader_t);
        m_current = reader;
    }
    return reader;
}

config_reader_t::config_reader_t() : m_files(boost::make_shared<config_files_t>()) {}

config_reader_t::config_reader_t(const config_reader_t& other)
    : m_files(boost::make_shared<config_files_t>(*other.m_files)), m_cfg_dir(other.m_cfg_dir)
{}

config_reader_t& config_reader_t::operator=(const config_reader_t& other)
{
    config_reader_t copy(other);
    m_files.swap(copy.m_files);
    std::swap(m_cfg_dir, copy.m_cfg_dir);
    return *this;
}

config_reader_t::~config_reader_t() = default;

void config_reader_t::set_cfg_dir(const basekit2::path_t& dir)
{
    m_cfg_dir = dir;
}

basekit2::path_t config_reader_t::get_cfg_dir() const
{
    return m_cfg_dir;
}

// The second search determines the file again: meanwhile it can have been created, or the host can
// have changed the directory.
std::wstring config_reader_t::read_property(boost::shared_ptr<velmo_ex_t> velmo_ex,
                                            boost::shared_ptr<message_t> message,
                                            const std::wstring& name)
{
    const boost::mutex::scoped_lock lock(m_lookup_mutex);
    std::wstring value = find_property(*message, name, velmo_ex->m_prefix);
    if (value.empty())
        value = find_property(*message, name, std::wstring());
    return value;
}

std::wstring config_reader_t::find_property(const message_t& message, const std::wstring& name,
                                            const std::wstring& prefix)
{
    const config_file_t* const file = find_file(message);
    return file ? file->find_property(name, message_access_t::type(message), prefix)
                : std::wstring();
}

const config_file_t* config_reader_t::find_file(const message_t& message)
{
    static const std::wstring no_source;
    const std::wstring* const named = message_access_t::find_source(message);
    const std::wstring& source = named ? *named : no_source;
    if (!m_cfg_dir.is_empty())
        return m_files->find(m_cfg_dir, source);
    setbook2::IProductLocations* const locations = setbook2::IProductLocations::get();
    if (!locations)
        return m_files->load(std::wstring());
    // A copy, since the host can change the message meanwhile.
    const std::wstring copy = source;
    return m_files->find(locations->get_config_dir(), copy);
}

} // namespace velmoext_1_4_8

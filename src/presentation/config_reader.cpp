#include <velmoext1/config_reader.h>

#include "core/message_access.h"
#include "presentation/config_file.h"

#include <setbook2/product_locations.h>

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

config_reader_t::config_reader_t() = default;
config_reader_t::config_reader_t(const config_reader_t& other) = default;
config_reader_t& config_reader_t::operator=(const config_reader_t& other) = default;
config_reader_t::~config_reader_t() = default;

void config_reader_t::set_cfg_dir(const basekit2::path_t& dir)
{
    m_cfg_dir = dir;
    m_last_files.clear();
}

basekit2::path_t config_reader_t::get_cfg_dir() const
{
    return m_cfg_dir;
}

std::wstring config_reader_t::read_property(boost::shared_ptr<velmo_ex_t> velmo_ex,
                                            boost::shared_ptr<message_t> message,
                                            const std::wstring& name)
{
    const boost::mutex::scoped_lock lock(m_lookup_mutex);
    const std::wstring no_source;
    const std::wstring* const source = message_access_t::find_source(*message);
    const config_file_t* const file = find_file(source ? *source : no_source);
    if (!file)
        return std::wstring();
    const std::wstring& type = message_access_t::type(*message);
    std::wstring value = file->find_property(name, type, velmo_ex->m_prefix);
    if (value.empty())
        value = file->find_property(name, type, std::wstring());
    return value;
}

const config_file_t* config_reader_t::find_file(const std::wstring& source)
{
    if (!m_cfg_dir.is_empty())
        return find_file(m_cfg_dir, source);
    setbook2::IProductLocations* const locations = setbook2::IProductLocations::get();
    if (!locations)
        return nullptr;
    const basekit2::path_t host_dir = locations->get_config_dir();
    if (!(host_dir == m_host_dir)) {
        m_last_files.clear();
        m_host_dir = host_dir;
    }
    return find_file(m_host_dir, source);
}

// The same few sources are asked for again and again: their paths are put together once.
const config_file_t* config_reader_t::find_file(const basekit2::path_t& dir,
                                                const std::wstring& source)
{
    const auto known = m_last_files.find(source);
    if (known != m_last_files.end())
        return known->second.get();
    basekit2::path_t path = dir;
    const auto file = get_file(path.append(source + L".xml").as_string(false));
    if (file)
        m_last_files.emplace(source, file);
    return file.get(); // owned by the maps
}

// Only what was loaded is kept: a file that is not there yet may come.
boost::shared_ptr<const config_file_t> config_reader_t::get_file(const std::wstring& path)
{
    const auto known = m_files.find(path);
    if (known != m_files.end())
        return known->second;
    boost::shared_ptr<const config_file_t> loaded = config_file_t::load(path);
    if (loaded)
        m_files.emplace(path, loaded);
    return loaded;
}

} // namespace velmoext_1_4_8

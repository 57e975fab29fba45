#include <velmoext1/config_reader.h>

#include "config_file.h"

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
    const config_file_t* const file =
        get_file(generate_filename(message->get_source()).as_string(false));
    if (!file)
        return std::wstring();
    const std::wstring type = message->get_type();
    const std::wstring own = file->find_property(name, type, velmo_ex->get_prefix());
    return own.empty() ? file->find_property(name, type, std::wstring()) : own;
}

// Only what was loaded is kept: a file that is not there yet may come.
const config_file_t* config_reader_t::get_file(const std::wstring& file)
{
    const auto known = m_files.find(file);
    if (known != m_files.end())
        return known->second.get();
    const boost::shared_ptr<const config_file_t> loaded = config_file_t::load(file);
    if (loaded)
        m_files.emplace(file, loaded);
    return loaded.get(); // the map holds it
}

basekit2::path_t config_reader_t::generate_filename(const std::wstring& source) const
{
    basekit2::path_t directory = m_cfg_dir;
    if (directory.is_empty()) {
        setbook2::IProductLocations* const locations = setbook2::IProductLocations::get();
        if (!locations)
            return basekit2::path_t();
        directory = locations->get_config_dir();
    }
    return directory.append(source + L".xml");
}

} // namespace velmoext_1_4_8

#include "presentation/config_files.h"

namespace velmoext_1_4_8
{

const config_file_t* config_files_t::find(const basekit2::path_t& dir, const std::wstring& source)
{
    if (!(dir == m_dir)) {
        m_files_of_dir.clear();
        m_dir = dir;
    }
    const auto known = m_files_of_dir.find(source);
    if (known != m_files_of_dir.end())
        return known->second.get();
    basekit2::path_t path = dir;
    const auto file = get(path.append(source + L".xml").as_string(false));
    if (file)
        m_files_of_dir.emplace(source, file);
    return file.get(); // owned by the maps
}

const config_file_t* config_files_t::load(const std::wstring& path)
{
    return get(path).get();
}

boost::shared_ptr<const config_file_t> config_files_t::get(const std::wstring& path)
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

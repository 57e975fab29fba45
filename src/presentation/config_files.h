#pragma once

#include "presentation/config_file.h"

#include <basekit2/path.h>

#include <boost/shared_ptr.hpp>

#include <map>
#include <string>

namespace velmoext_1_4_8
{

/// The configuration files that a reader has loaded. For one thread at a time.
class config_files_t
{
public:
    /// Returns SOURCE.xml of the directory, null if it cannot be loaded. Loads a file once. A file
    /// that could not be loaded is tried again, because it can be created later.
    const config_file_t* find(const basekit2::path_t& dir, const std::wstring& source);
    /// Does the same with the file of this path.
    const config_file_t* load(const std::wstring& path);

private:
    typedef std::map<std::wstring, boost::shared_ptr<const config_file_t>> files_t;

    boost::shared_ptr<const config_file_t> get(const std::wstring& path);

    files_t m_files; ///< by their paths
    // The same few sources are requested repeatedly: their paths are built once.
    basekit2::path_t m_dir;
    files_t m_files_of_dir; ///< those of m_dir, by their sources
};

} // namespace velmoext_1_4_8

/// @file
#pragma once

#include <setbook2/product_locations.h>

#include <string>

namespace audit
{

/// The locations of this program's files: in `share` beside the program. The process's locations as
/// long as the object exists.
class locations_t : public setbook2::IProductLocations
{
public:
    locations_t();
    locations_t(const locations_t&) = delete;
    locations_t& operator=(const locations_t&) = delete;
    ~locations_t() override;

    const wchar_t* get_install_dir() override { return m_install.c_str(); }
    const wchar_t* get_data_dir() override { return m_data.c_str(); }
    const wchar_t* get_config_dir() override { return m_config.c_str(); }

    /// Returns the directory of the message catalogs.
    const std::wstring& locale_dir() const { return m_locale; }

private:
    const std::wstring m_install;
    const std::wstring m_data;
    const std::wstring m_config;
    const std::wstring m_locale;
};

} // namespace audit

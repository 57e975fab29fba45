#include "locations.h"

#include "library_names.h"

#include <rova/strings.h>

#include <filesystem>
#include <system_error>

namespace audit
{
namespace
{

std::wstring program_directory()
{
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return rova::strings::utf8_to_utf16(program.parent_path().string());
}

} // namespace

locations_t::locations_t()
    : m_install(program_directory()), m_data(m_install + L"/share"), m_config(m_data + L"/config"),
      m_locale(m_data + L"/locale")
{
    set(this);
}

locations_t::~locations_t()
{
    set(nullptr);
}

} // namespace audit

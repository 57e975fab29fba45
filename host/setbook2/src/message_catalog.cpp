#include <setbook2/message_catalog.h>

#include "file_catalog.h"
#include "locale_folders.h"

#include <rova/strings.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace setbook2
{
namespace
{

using ROVA_2_18::i18n::catalog_t;
using ROVA_2_18::strings::utf16_to_utf8;
using std::chrono::steady_clock;

// Each new message asks for the catalog of its prefix, which most components do not have.
constexpr std::chrono::seconds retry_pause(1);
// The names can come from untrusted senders.
const std::size_t max_missing_names = 1000;

class catalogs_t
{
public:
    const catalog_t* find(const std::wstring& name);
    void set(const std::wstring& name, boost::shared_ptr<const catalog_t> catalog);
    void bind(const catalog_location_t& location);

private:
    const catalog_t* find_file(const std::wstring& name);

    std::mutex m_mutex;
    std::map<std::wstring, boost::shared_ptr<const catalog_t>> m_registered; ///< guarded by m_mutex
    std::map<std::wstring, std::unique_ptr<const file_catalog_t>> m_files;   ///< guarded by m_mutex
    std::map<std::wstring, steady_clock::time_point>
        m_missing; ///< names without a file, and when to try again; guarded by m_mutex
    std::optional<catalog_location_t> m_location; ///< guarded by m_mutex
};

const catalog_t* catalogs_t::find(const std::wstring& name)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto registered = m_registered.find(name);
    return registered != m_registered.end() ? registered->second.get() : find_file(name);
}

const catalog_t* catalogs_t::find_file(const std::wstring& name)
{
    const auto known = m_files.find(name);
    if (known != m_files.end())
        return known->second.get();
    if (!m_location || !file_catalog_t::can_name_file(name))
        return nullptr;
    const auto now = steady_clock::now();
    const auto missing = m_missing.find(name);
    if (missing != m_missing.end() && now < missing->second)
        return nullptr;
    if (auto file = file_catalog_t::find(*m_location, name)) {
        m_missing.erase(name);
        return m_files.emplace(name, std::move(file)).first->second.get();
    }
    if (m_missing.size() == max_missing_names)
        m_missing.clear();
    m_missing[name] = steady_clock::now() + retry_pause;
    return nullptr;
}

// The former catalog is destroyed with the parameter, after the lock is released: the destructor of
// an application's catalog may call these functions.
void catalogs_t::set(const std::wstring& name, boost::shared_ptr<const catalog_t> catalog)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto& registered = m_registered[name];
    registered.swap(catalog);
    if (!registered)
        m_registered.erase(name);
}

void catalogs_t::bind(const catalog_location_t& location)
{
    std::map<std::wstring, std::unique_ptr<const file_catalog_t>> former;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_location = location;
    m_files.swap(former);
    m_missing.clear();
}

catalogs_t& catalogs()
{
    static catalogs_t all;
    return all;
}

} // namespace

const catalog_t* getMessageCatalog(const std::wstring& name)
{
    return catalogs().find(name);
}

void registerMessageCatalog(const std::wstring& name, boost::shared_ptr<const catalog_t> catalog)
{
    catalogs().set(name, std::move(catalog));
}

bool bindCatalogDirectory(const std::wstring& directory, const std::wstring& locale)
{
    const bool can_be_directory = !directory.empty() && directory.find(L'\0') == std::wstring::npos;
    const catalog_location_t location = {utf16_to_utf8(directory),
                                         locale_folders(utf16_to_utf8(locale))};
    const bool is_valid = can_be_directory && !location.folders.empty();
    if (is_valid)
        catalogs().bind(location);
    return is_valid;
}

} // namespace setbook2

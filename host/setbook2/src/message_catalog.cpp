#include <setbook2/message_catalog.h>

#include "catalog_file.h"

#include <rova/strings.h>

#include <boost/algorithm/string/predicate.hpp>
#include <boost/locale/info.hpp>
#include <boost/locale/util.hpp>

#include <algorithm>
#include <locale>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace setbook2
{
namespace
{

using ROVA_2_18::i18n::catalog_t;
using ROVA_2_18::strings::utf16_to_utf8;

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
    std::map<std::wstring, std::unique_ptr<const catalog_file_t>> m_files;   ///< guarded by m_mutex
    std::optional<catalog_location_t> m_location;                            ///< guarded by m_mutex
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
    if (!m_location)
        return nullptr;
    auto file = catalog_file_t::find(*m_location, name);
    return file ? m_files.emplace(name, std::move(file)).first->second.get() : nullptr;
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
    std::map<std::wstring, std::unique_ptr<const catalog_file_t>> former;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_location = location;
    m_files.swap(former);
}

catalogs_t& catalogs()
{
    static catalogs_t all;
    return all;
}

// The language that Boost.Locale returns for a text that is not a locale name.
const char no_language[] = "C";

// Rejects all other characters, since the text becomes part of a path.
bool is_locale_text(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char letter) {
        return std::isalnum(letter, std::locale::classic()) || letter == '_' || letter == '-' ||
               letter == '.' || letter == '@';
    });
}

// Returns the folder for a locale that has no language, and an empty text for any other.
// Older releases of Boost.Locale read such a locale as a language, newer ones as none.
std::string folder_without_language(const std::string& text)
{
    const std::string name = text.substr(0, text.find_first_of("_-.@"));
    for (const char* folder : {"c", "posix"})
        if (boost::algorithm::iequals(name, folder, std::locale::classic()))
            return folder;
    return std::string();
}

std::optional<catalog_location_t> parse_location(const std::wstring& directory,
                                                 const std::wstring& locale)
{
    if (directory.empty() || directory.find(L'\0') != std::wstring::npos)
        return std::nullopt;
    const std::string text = utf16_to_utf8(locale);
    if (!is_locale_text(text))
        return std::nullopt;
    const std::string folder = folder_without_language(text);
    if (!folder.empty())
        return catalog_location_t{utf16_to_utf8(directory), folder, std::string(), std::string()};
    const std::locale parsed = boost::locale::util::create_info(std::locale::classic(), text);
    const auto& info = std::use_facet<boost::locale::info>(parsed);
    if (info.language() == no_language)
        return std::nullopt;
    return catalog_location_t{utf16_to_utf8(directory), info.language(), info.country(),
                              info.variant()};
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
    const auto location = parse_location(directory, locale);
    if (location)
        catalogs().bind(*location);
    return location.has_value();
}

} // namespace setbook2

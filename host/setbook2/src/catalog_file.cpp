#include "catalog_file.h"

#include "mo_check.h"

#include <basekit2/file.h>

#include <rova/strings.h>

#include <boost/locale/gnu_gettext.hpp>

#include <cstddef>
#include <exception>
#include <new>
#include <vector>

namespace setbook2
{
namespace
{

namespace gnu_gettext = boost::locale::gnu_gettext;
namespace strings = ROVA_2_18::strings;
using ROVA_2_18::i18n::message_t;

typedef boost::locale::message_format<char> texts_t;

const std::size_t largest_file = std::size_t{16} << 20U;
const char encoding[] = "UTF-8";

// Returns no bytes if the file is missing or unusable, so that the search continues.
std::vector<char> read_valid_file(const std::string& file)
{
    std::string text;
    if (!basekit2::read_file(strings::utf8_to_utf16(file), largest_file, text))
        return {};
    std::vector<char> bytes(text.begin(), text.end());
    return is_valid_mo(bytes) ? bytes : std::vector<char>();
}

// DIRECTORY/LOCALE/...
std::string locale_of(const std::string& file, const std::string& directory)
{
    const std::size_t begin = directory.size() + 1;
    return file.substr(begin, file.find('/', begin) - begin);
}

gnu_gettext::messages_info make_search(const catalog_location_t& location, const std::string& name)
{
    gnu_gettext::messages_info search;
    search.language = location.language;
    search.country = location.country;
    search.variant = location.variant;
    search.encoding = encoding;
    search.domains.emplace_back(name);
    search.paths.push_back(location.directory);
    return search;
}

bool can_name_file(const std::wstring& name)
{
    return name.find(L'/') == std::wstring::npos && name.find(L'\0') == std::wstring::npos;
}

} // namespace

std::unique_ptr<const catalog_file_t> catalog_file_t::find(const catalog_location_t& location,
                                                           const std::wstring& name)
{
    if (!can_name_file(name))
        return nullptr;
    gnu_gettext::messages_info search = make_search(location, strings::utf16_to_utf8(name));
    std::string found;
    search.callback = [&](const std::string& file, const std::string& /*encoding*/) {
        std::vector<char> bytes = read_valid_file(file);
        if (!bytes.empty())
            found = locale_of(file, location.directory);
        return bytes;
    };
    try {
        const std::locale texts(std::locale::classic(),
                                gnu_gettext::create_messages_facet<char>(search));
        return std::unique_ptr<const catalog_file_t>(
            found.empty() ? nullptr : new catalog_file_t(texts, found));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        return nullptr; // an invalid plural form, for example
    }
}

catalog_file_t::catalog_file_t(const std::locale& texts, const std::string& locale)
    : m_texts(texts), m_locale(locale)
{}

message_t catalog_file_t::message(const strings::ustring16& id) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto known = m_messages.find(id);
    if (known != m_messages.end())
        return known->second;
    const char* const text = text_of(id);
    if (!text)
        return message_t();
    return m_messages.emplace(id, message_t(strings::utf8_to_utf16(text), m_locale)).first->second;
}

// Returns null for the empty id, which is the key of the file's header. Returns null for an id with
// a zero character, which would be cut there.
const char* catalog_file_t::text_of(const std::wstring& id) const
{
    if (id.empty() || id.find(L'\0') != std::wstring::npos)
        return nullptr;
    const std::string key = strings::utf16_to_utf8(id);
    return std::use_facet<texts_t>(m_texts).get(0, nullptr, key.c_str());
}

} // namespace setbook2

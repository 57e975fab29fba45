#include "file_catalog.h"

#include <rova/strings.h>

#include <cstddef>
#include <utility>

namespace setbook2
{

namespace strings = ROVA_2_18::strings;
using ROVA_2_18::i18n::message_t;

namespace
{

const std::size_t max_name = 252; // file systems allow 255 bytes with the extension

} // namespace

bool file_catalog_t::can_name_file(const std::wstring& name)
{
    return name.size() <= max_name && name.find(L'/') == std::wstring::npos &&
           name.find(L'\0') == std::wstring::npos;
}

std::unique_ptr<const file_catalog_t> file_catalog_t::find(const catalog_location_t& location,
                                                           const std::wstring& name)
{
    std::vector<catalog_file_t> files;
    for (const std::string& folder : location.folders)
        if (auto file =
                catalog_file_t::load(location.directory, folder, strings::utf16_to_utf8(name)))
            files.push_back(std::move(*file));
    return std::unique_ptr<const file_catalog_t>(
        files.empty() ? nullptr : new file_catalog_t(std::move(files)));
}

file_catalog_t::file_catalog_t(std::vector<catalog_file_t> files) : m_files(std::move(files)) {}

// The empty id is the key of a file's header. An id with a zero character would be cut there, and
// "\x04" ends a context.
message_t file_catalog_t::message(const strings::ustring16& id) const
{
    if (id.empty() || id.find_first_of(std::wstring(L"\0\x04", 2)) != std::wstring::npos)
        return message_t();
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto known = m_messages.find(id);
    if (known != m_messages.end())
        return known->second;
    const std::string utf8 = strings::utf16_to_utf8(id);
    for (const catalog_file_t& file : m_files)
        if (const auto text = file.find(utf8))
            return m_messages.emplace(id, *text).first->second;
    return message_t();
}

} // namespace setbook2

#pragma once

#include "catalog_file.h"

#include <rova/i18n.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace setbook2
{

/// Directory of the catalogs, and the folders in it that are searched, in this order.
struct catalog_location_t
{
    std::string directory;
    std::vector<std::string> folders;
};

/// The catalog of one name: its files for a locale and the fall-backs of that. Each text comes from
/// the first file that has it. A text is created on the first request for it, and kept.
class file_catalog_t : public ROVA_2_18::i18n::catalog_t
{
public:
    /// Returns whether a file can have this name. The names can come from untrusted senders.
    static bool can_name_file(const std::wstring& name);

    /// Returns null if there is no usable file. Requires a name that a file can have.
    static std::unique_ptr<const file_catalog_t> find(const catalog_location_t& location,
                                                      const std::wstring& name);

    ROVA_2_18::i18n::message_t message(const ROVA_2_18::strings::ustring16& id) const override;

private:
    explicit file_catalog_t(std::vector<catalog_file_t> files);

    mutable std::mutex m_mutex;
    const std::vector<catalog_file_t> m_files; ///< guarded by m_mutex
    mutable std::map<std::wstring, ROVA_2_18::i18n::message_t>
        m_messages; ///< those with a text; guarded by m_mutex
};

} // namespace setbook2

#pragma once

#include <rova/i18n.h>

#include <locale>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace setbook2
{

/// Directory and locale of the catalogs.
struct catalog_location_t
{
    std::string directory;
    std::string language;
    std::string country;
    std::string variant;
};

/// The texts of one `.mo` file. A message is created on the first request for its text, and kept.
class catalog_file_t : public ROVA_2_18::i18n::catalog_t
{
public:
    /// Returns the first usable file of that name, null if there is none.
    static std::unique_ptr<const catalog_file_t> find(const catalog_location_t& location,
                                                      const std::wstring& name);

    ROVA_2_18::i18n::message_t message(const ROVA_2_18::strings::ustring16& id) const override;

private:
    catalog_file_t(const std::locale& texts, const std::string& locale);

    const char* text_of(const std::wstring& id) const;

    const std::locale m_texts; ///< contains only the file's facet
    const std::string m_locale;

    mutable std::mutex m_mutex;
    mutable std::map<std::wstring, ROVA_2_18::i18n::message_t>
        m_messages; ///< those with a text; guarded by m_mutex
};

} // namespace setbook2

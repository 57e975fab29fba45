#pragma once

#include "charset.h"
#include "mo_file.h"

#include <rova/i18n.h>

#include <memory>
#include <optional>
#include <string>

namespace setbook2
{

/// One `.mo` file and the locale of its folder. For one thread at a time.
class catalog_file_t
{
public:
    /// Returns nothing if there is no such file, or if it cannot be used.
    static std::optional<catalog_file_t> load(const std::string& directory,
                                              const std::string& locale, const std::string& name);

    /// Returns nothing if the file has no translation of the id.
    std::optional<ROVA_2_18::i18n::message_t> find(const std::string& id) const;

private:
    catalog_file_t(mo_file_t texts, std::unique_ptr<charset_t> charset, std::string locale);

    mo_file_t m_texts;
    std::unique_ptr<charset_t> m_charset; ///< null if the texts are in UTF-8
    std::string m_locale;
};

} // namespace setbook2

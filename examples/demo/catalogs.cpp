#include "catalogs.h"

#include "library_names.h"
#include "message_words.h"

#include <rova/strings.h>
#include <setbook2/message_catalog.h>

#include <cstdlib>

namespace audit
{

std::string environment_language()
{
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (const char* const value = std::getenv(name); value && *value != '\0')
            return value;
    return std::string();
}

bool bind_catalogs(const std::wstring& directory, const std::string& language)
{
    return setbook2::bindCatalogDirectory(directory, rova::strings::utf8_to_utf16(language)) &&
           setbook2::getMessageCatalog(source_name);
}

void bind_catalogs_or_english(const std::wstring& directory, const std::string& language)
{
    if (!bind_catalogs(directory, language))
        bind_catalogs(directory, "en");
}

std::wstring catalog_text(const std::wstring& id)
{
    const rova::i18n::catalog_t* const catalog = setbook2::getMessageCatalog(source_name);
    return catalog ? catalog->message(id).as_ustring({}) : std::wstring();
}

} // namespace audit

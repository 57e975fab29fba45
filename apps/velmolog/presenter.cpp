#include "presenter.h"

#include <velmoext1/extended_message.h>

#include <rova/strings.h>
#include <setbook2/message_catalog.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace velmolog
{
namespace
{

using namespace velmoext_1_4_8;
using ROVA_2_18::strings::utf16_to_utf8;
using ROVA_2_18::strings::utf8_to_utf16;

constexpr std::size_t max_source_size = 200;

/// Returns the text, in quotation marks if its end could not be seen otherwise.
std::string quoted_if_needed(const std::string& text)
{
    if (!text.empty() && text.find_first_of(" \t\r\n\"") == std::string::npos)
        return text;
    std::string result = "\"";
    for (const char byte : text) {
        if (byte == '"' || byte == '\\')
            result += '\\';
        result += byte;
    }
    return result + "\"";
}

const char default_language[] = "en";

/// Returns the default language if the environment has none.
std::string language_of_environment()
{
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
        if (!value || !*value)
            continue;
        const std::string language = std::string(value).substr(0, std::string(value).find('.'));
        return language == "C" || language == "POSIX" ? default_language : value;
    }
    return default_language;
}

/// An empty path is not used.
void require_directory(const std::string& path)
{
    std::error_code error;
    if (!path.empty() && !std::filesystem::is_directory(path, error))
        throw usage_error_t(path + " is not a directory");
}

/// Returns whether the library may look for files of this source, whose name comes from a log.
bool can_have_files(const message_t& message)
{
    const std::wstring source = message.get_source();
    return source.size() <= max_source_size && source.find(L'/') == std::wstring::npos &&
           source.find(L'\0') == std::wstring::npos;
}

} // namespace

std::string plain_text(const message_t& message)
{
    const std::wstring type = message.get_type();
    std::string text = type.empty() ? "message" : quoted_if_needed(utf16_to_utf8(type));
    for (const auto& [name, value] : message.get_content().args)
        text.append(" ")
            .append(quoted_if_needed(utf16_to_utf8(name)))
            .append("=")
            .append(quoted_if_needed(utf16_to_utf8(value)));
    return text;
}

presenter_t::presenter_t(const catalog_options_t& options)
    : m_locale_directory(options.locale_directory)
{
    if (m_locale_directory.empty())
        return;
    require_directory(m_locale_directory);
    require_directory(options.config_directory);
    m_first_language = options.language.empty() ? language_of_environment() : options.language;
    if (options.language.empty() && !bind(m_first_language))
        m_first_language = default_language;
    select_language(m_first_language);
    m_config = config_reader_t::get();
    m_config->set_cfg_dir(utf8_to_utf16(options.config_directory));
    m_ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"velmolog"), utf8_to_utf16(options.prefix));
}

bool presenter_t::bind(const std::string& language) const
{
    return setbook2::bindCatalogDirectory(utf8_to_utf16(m_locale_directory),
                                          utf8_to_utf16(language));
}

void presenter_t::select_language(const std::string& language)
{
    if (!bind(language))
        throw usage_error_t("\"" + language + "\" is not the name of a language");
}

texts_t presenter_t::present(const entry_t& entry) const
{
    texts_t texts;
    if (has_catalogs() && can_have_files(*entry.message)) {
        extended_message_t extended(m_ex, entry.message);
        texts.title = utf16_to_utf8(extended.get_title());
        texts.text = utf16_to_utf8(extended.get_text());
    }
    texts.is_plain = texts.text.empty();
    if (texts.is_plain)
        texts.text = plain_text(*entry.message);
    return texts;
}

} // namespace velmolog

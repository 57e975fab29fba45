#include "catalog_file.h"

#include <basekit2/file.h>

#include <rova/strings.h>

#include <boost/algorithm/string/predicate.hpp>

#include <cstddef>
#include <locale>
#include <utility>
#include <vector>

namespace setbook2
{
namespace
{

namespace strings = ROVA_2_18::strings;
using ROVA_2_18::i18n::message_t;

const std::size_t max_file_bytes = std::size_t{16} << 20U;

bool is_utf8(const std::string& charset)
{
    return charset.empty() || boost::algorithm::iequals(charset, "utf-8", std::locale::classic());
}

} // namespace

std::optional<catalog_file_t> catalog_file_t::load(const std::string& directory,
                                                   const std::string& locale,
                                                   const std::string& name)
{
    const std::string file = directory + "/" + locale + "/LC_MESSAGES/" + name + ".mo";
    std::string bytes;
    if (!basekit2::read_file(strings::utf8_to_utf16(file), max_file_bytes, bytes))
        return std::nullopt;
    auto texts = mo_file_t::parse(std::vector<char>(bytes.begin(), bytes.end()));
    if (!texts)
        return std::nullopt;
    const std::string charset_name = texts->charset();
    if (is_utf8(charset_name))
        return catalog_file_t(std::move(*texts), nullptr, locale);
    auto charset = charset_t::open(charset_name);
    if (!charset)
        return std::nullopt;
    return catalog_file_t(std::move(*texts), std::move(charset), locale);
}

catalog_file_t::catalog_file_t(mo_file_t texts, std::unique_ptr<charset_t> charset,
                               std::string locale)
    : m_texts(std::move(texts)), m_charset(std::move(charset)), m_locale(std::move(locale))
{}

std::optional<message_t> catalog_file_t::find(const std::string& id) const
{
    const std::optional<std::string> key = m_charset ? m_charset->from_utf8(id) : id;
    // ICU drops some characters that the charset lacks. The id would be another then.
    const bool is_same = key && (!m_charset || m_charset->to_utf8(*key) == id);
    const std::string_view text = is_same ? m_texts.find(*key) : std::string_view();
    if (text.empty())
        return std::nullopt;
    const std::optional<std::string> utf8 =
        m_charset ? m_charset->to_utf8(text) : std::string(text);
    if (!utf8)
        return std::nullopt;
    return message_t(strings::utf8_to_utf16(*utf8), m_locale);
}

} // namespace setbook2

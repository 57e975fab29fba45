#include "world.h"

#include "handlers.h"

#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <filesystem>
#include <iostream>
#include <system_error>

namespace soak
{
namespace
{

using namespace velmoext_1_4_8;

const char configuration[] =
    "<bag>\n"
    "  <message_type id='soak_first' title_msgid='title' name='first'/>\n"
    "  <message_type id='soak_second' title_msgid='title' name='second'/>\n"
    "</bag>\n";

// The titles are in the catalog that is searched second.
const wchar_t locale[] = L"en_GB.UTF-8";
const char files[] = "{count, plural, one {# file} other {# files}} of {sum}";
const po_entries_t filed_texts = {
    {"soak_first", files}, {"soak_second", files}, {"soak_third", files}};
const po_entries_t filed_titles = {{"title", "title {sum}"}};

/// Returns each id as its own text, with the sum that every message has.
class echo_catalog_t : public ROVA_2_18::i18n::catalog_t
{
public:
    ROVA_2_18::i18n::message_t message(const ROVA_2_18::strings::ustring16& id) const override
    {
        return ROVA_2_18::i18n::message_t(id + L" {sum}", "en");
    }
};

} // namespace

world_t::world_t()
    : m_reader(config_reader_t::get()), m_checked_ex(velmo_ex_t::get(L"soak.checked", prefix()))
{
    m_checked_ex->push_handler(boost::make_shared<text_recording_handler_t>());
    for (std::size_t i = 0; i < sources; ++i) {
        configure(source_name(i));
        m_catalogs.add(prefix() + L'.' + source_name(i), boost::make_shared<echo_catalog_t>());
    }
    configure(source_name_with_files());
    m_catalogs.make("en", "soak.filed", po_of(filed_texts));
    m_catalogs.make("en", "filed", po_of(filed_titles));
    m_catalogs.bind(locale);
    m_reader->set_cfg_dir(m_folder.wide_name(""));
}

void world_t::configure(const std::wstring& source) const
{
    m_folder.write(ROVA_2_18::strings::utf16_to_utf8(source) + ".xml", configuration);
}

boost::shared_ptr<velmo_ex_t> world_t::ex(std::size_t number)
{
    auto known = m_exs.at(number).get();
    // get() returns null while another thread destroys the former object.
    while (!known) {
        known = velmo_ex_t::get(L"soak." + std::to_wstring(number), prefix());
        m_exs.at(number).set(known);
    }
    return known;
}

boost::shared_ptr<messages_storage_t> world_t::storage(std::size_t number)
{
    auto known = m_storages.at(number).get();
    if (known)
        return known;
    const std::wstring name = ROVA_2_18::strings::utf8_to_utf16(log_name(number));
    known = messages_storage_t::get(basekit2::path_t(name));
    m_storages.at(number).set(known);
    return known;
}

std::string world_t::log_name(std::size_t number) const
{
    return m_folder.name("log" + std::to_string(number) + ".xml");
}

std::wstring world_t::source_name(std::size_t number)
{
    return L"source" + std::to_wstring(number);
}

void world_t::clear()
{
    for (std::size_t i = 0; i < m_exs.size(); ++i)
        release_ex(i);
    for (std::size_t i = 0; i < logs; ++i) {
        release_storage(i);
        std::error_code ignored;
        std::filesystem::remove(log_name(i), ignored);
        std::filesystem::remove(log_name(i) + ".tmp", ignored);
    }
    m_catalogs.bind(locale);
}

void world_t::check(bool condition, const char* what)
{
    if (!condition && ++m_failures < 20)
        std::cerr << "does not hold: " << what << '\n';
}

} // namespace soak

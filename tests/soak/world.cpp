#include "world.h"

#include <setbook2/message_catalog.h>

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

/// Gives each id as its own text, with the sum that every message has.
class echo_catalog_t : public ROVA_2_18::i18n::catalog_t
{
public:
    ROVA_2_18::i18n::message_t message(const ROVA_2_18::strings::ustring16& id) const override
    {
        return ROVA_2_18::i18n::message_t(id + L" {sum}", "en");
    }
};

} // namespace

world_t::world_t() : m_reader(config_reader_t::get())
{
    for (std::size_t i = 0; i < sources; ++i) {
        const std::wstring name = source_name(i);
        m_folder.write(ROVA_2_18::strings::utf16_to_utf8(name) + ".xml", configuration);
        setbook2::registerMessageCatalog(prefix() + L'.' + name,
                                         boost::make_shared<echo_catalog_t>());
    }
    m_reader->set_cfg_dir(m_folder.wide_name(""));
}

world_t::~world_t()
{
    for (std::size_t i = 0; i < sources; ++i)
        setbook2::registerMessageCatalog(prefix() + L'.' + source_name(i), {});
}

boost::shared_ptr<velmo_ex_t> world_t::ex(std::size_t number)
{
    auto known = m_exs.at(number).get();
    // None is given as long as another thread lets the former one go.
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
        let_go_of_ex(i);
    for (std::size_t i = 0; i < logs; ++i) {
        let_go_of_storage(i);
        std::error_code ignored;
        std::filesystem::remove(log_name(i), ignored);
        std::filesystem::remove(log_name(i) + ".tmp", ignored);
    }
}

void world_t::check(bool condition, const char* what)
{
    if (!condition && ++m_wrong < 20)
        std::cerr << "does not hold: " << what << '\n';
}

} // namespace soak

// Replaces functions of the host libraries: the dynamic linker prefers those of the program.

#include "host_functions.h"

#include <setbook2/message_catalog.h>

#include <utility>

namespace
{

loader_t current_loader;
catalog_finder_t current_finder;

} // namespace

loader_scope_t::loader_scope_t(loader_t loader)
    : m_former(std::exchange(current_loader, std::move(loader)))
{}

loader_scope_t::~loader_scope_t()
{
    current_loader = std::move(m_former);
}

catalog_finder_scope_t::catalog_finder_scope_t(catalog_finder_t finder)
    : m_former(std::exchange(current_finder, std::move(finder)))
{}

catalog_finder_scope_t::~catalog_finder_scope_t()
{
    current_finder = std::move(m_former);
}

std::uint32_t basekit2::load_variant_bag2(variant_bag_t& bag, const std::wstring& file,
                                          const wchar_t* root, bool allow_missing)
{
    return current_loader ? current_loader(bag, file, root, allow_missing) : load_failed;
}

const ROVA_2_18::i18n::catalog_t* setbook2::getMessageCatalog(const std::wstring& name)
{
    return current_finder ? current_finder(name) : nullptr;
}

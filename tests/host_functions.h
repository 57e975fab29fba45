#pragma once

#include <basekit2/variant_bag.h>

#include <rova/i18n.h>

#include <cstdint>
#include <functional>
#include <string>

typedef std::function<std::uint32_t(basekit2::variant_bag_t& bag, const std::wstring& file,
                                    const wchar_t* root, bool allow_missing)>
    loader_t;
typedef std::function<const ROVA_2_18::i18n::catalog_t*(const std::wstring& name)> catalog_finder_t;

/// While in scope, basekit2::load_variant_bag2() calls the loader. Otherwise it fails.
class loader_scope_t
{
public:
    explicit loader_scope_t(loader_t loader);
    loader_scope_t(const loader_scope_t&) = delete;
    loader_scope_t& operator=(const loader_scope_t&) = delete;
    ~loader_scope_t();

private:
    loader_t m_former;
};

/// While in scope, setbook2::getMessageCatalog() calls the finder. Otherwise it returns null.
class catalog_finder_scope_t
{
public:
    explicit catalog_finder_scope_t(catalog_finder_t finder);
    catalog_finder_scope_t(const catalog_finder_scope_t&) = delete;
    catalog_finder_scope_t& operator=(const catalog_finder_scope_t&) = delete;
    ~catalog_finder_scope_t();

private:
    catalog_finder_t m_former;
};

#pragma once

#include <basekit2/variant_bag.h>

#include <boost/shared_ptr.hpp>

#include <map>
#include <string>
#include <vector>

namespace velmoext_1_4_8
{

/// A loaded configuration file. Immutable, so any thread may use it.
class config_file_t
{
public:
    /// Returns null if the file cannot be loaded.
    static boost::shared_ptr<const config_file_t> load(const std::wstring& file);

    explicit config_file_t(basekit2::variant_bag_t bag);
    config_file_t(const config_file_t&) = delete;
    config_file_t& operator=(const config_file_t&) = delete;
    ~config_file_t() = default;

    /// Returns the property from the first entry with this type and prefix that has it, or an empty
    /// text. An empty prefix matches every entry.
    std::wstring find_property(const std::wstring& name, const std::wstring& type,
                               const std::wstring& prefix) const;

private:
    struct entry_t
    {
        const basekit2::variant_bag_t* bag;
        std::wstring prefix;
    };

    const basekit2::variant_bag_t m_bag;
    /// By their ids, each type's in the file's order. A type is found in a time that does not grow
    /// with the entries of the others.
    std::map<std::wstring, std::vector<entry_t>> m_entries;
};

} // namespace velmoext_1_4_8

#include "presentation/config_file.h"

#include <boost/make_shared.hpp>

#include <utility>

namespace velmoext_1_4_8
{
namespace
{

using basekit2::variant_bag_t;
using basekit2::variant_t;

const wchar_t root[] = L"bag";
const wchar_t entry[] = L"message_type";
const wchar_t id[] = L"id";
const wchar_t prefix_name[] = L"prefix";

const variant_t no_value(L"");

// An element's text is its value without a name.
const wchar_t* find_text(const variant_bag_t& bag)
{
    for (auto value = bag.begin_values(); !value.at_end(); value.next())
        if (value.get_name().empty())
            return value.get_value().get<const wchar_t*>();
    return nullptr;
}

std::wstring read_attribute(const variant_bag_t& bag, const std::wstring& name)
{
    if (bag.has(name))
        return bag.get_variant(name, no_value).get<const wchar_t*>();
    for (auto child = bag.begin_by_name(name); !child.at_end(); child.next())
        if (const wchar_t* const text = find_text(child.get_value()))
            return text;
    return std::wstring();
}

} // namespace

boost::shared_ptr<const config_file_t> config_file_t::load(const std::wstring& file)
{
    variant_bag_t bag;
    const bool is_failure =
        (basekit2::load_variant_bag2(bag, file, root, false) & basekit2::load_failed) != 0;
    return is_failure ? nullptr : boost::make_shared<const config_file_t>(std::move(bag));
}

config_file_t::config_file_t(variant_bag_t bag) : m_bag(std::move(bag))
{
    for (auto child = m_bag.begin_by_name(entry); !child.at_end(); child.next()) {
        const variant_bag_t& properties = child.get_value();
        m_entries[read_attribute(properties, id)].push_back(
            {&properties, read_attribute(properties, prefix_name)});
    }
    // An entry without an id is not used, not even for messages without a type.
    m_entries.erase(std::wstring());
}

std::wstring config_file_t::find_property(const std::wstring& name, const std::wstring& type,
                                          const std::wstring& prefix) const
{
    const auto found = m_entries.find(type);
    if (found == m_entries.end())
        return std::wstring();
    for (const entry_t& candidate : found->second) {
        if (!prefix.empty() && candidate.prefix != prefix)
            continue;
        std::wstring value = read_attribute(*candidate.bag, name);
        if (!value.empty())
            return value;
    }
    return std::wstring();
}

} // namespace velmoext_1_4_8

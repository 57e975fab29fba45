#include "reader_limits.h"

#include "xml_text.h"

namespace velmoext_1_4_8
{
namespace
{

bool take(std::size_t& left, std::size_t amount)
{
    if (amount > left)
        return false;
    left -= amount;
    return true;
}

bool declares_namespace(const std::string& name)
{
    return name.compare(0, 5, "xmlns") == 0;
}

} // namespace

bool reader_limits_t::admit_name(const std::wstring& key, const std::string& name)
{
    return name.size() <= longest_name && is_xml_name(key) && take(m_names_left, name.size() + 1);
}

bool reader_limits_t::admit_attribute(const std::string& name, const std::string& value)
{
    // The value of a namespace's declaration stands in the dictionary too.
    return (!declares_namespace(name) || take(m_names_left, value.size())) &&
           take(m_start_tag_left, sizeof(" =\"\"") + name.size() + size_as_xml_attribute(value)) &&
           is_first_of_name(name);
}

bool reader_limits_t::admits_arg(const std::string& name)
{
    return size_as_xml_attribute(name) <= longest_start_tag;
}

// A character beyond the BMP can stand in a key as one element or as two: the names of two keys can
// be the same, but no element may have an attribute twice.
bool reader_limits_t::is_first_of_name(const std::string& name)
{
    return name.find_first_of("\xF0\xF1\xF2\xF3") == std::string::npos ||
           m_ambiguous_names.insert(name).second;
}

} // namespace velmoext_1_4_8

#include "xml/reader_limits.h"

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

// libxml2 takes a name apart at its first two colons. Where a name stands between them, what
// follows the second one must begin a name too, or the whole document is none.
bool can_be_taken_apart(const std::wstring& name)
{
    const std::size_t first = name.find(L':');
    const std::size_t second = first == std::wstring::npos ? first : name.find(L':', first + 1);
    if (first == 0 || second == std::wstring::npos || second + 1 == name.size())
        return true;
    return is_xml_name(name.substr(second + 1)) ||
           !is_xml_name(name.substr(first + 1, second - first - 1));
}

bool declares_namespace(const std::string& name)
{
    return name.compare(0, 5, "xmlns") == 0;
}

} // namespace

bool reader_limits_t::admit_name(const std::wstring& key, const xml_text_t& name)
{
    const std::size_t size = name.utf8().size();
    return size <= longest_name && is_xml_name(key) && can_be_taken_apart(key) &&
           take(m_names_left, size + 1);
}

bool reader_limits_t::admit_attribute(const xml_text_t& name, const xml_text_t& value)
{
    // The value of a namespace's declaration stands in the dictionary too.
    return (!declares_namespace(name.utf8()) || take(m_names_left, value.utf8().size())) &&
           take(m_start_tag_left,
                sizeof(" =\"\"") + name.utf8().size() + size_as_xml_attribute(value)) &&
           is_first_of_name(name) && take(m_attributes_left, 1);
}

bool reader_limits_t::admits_arg(const xml_text_t& name)
{
    return size_as_xml_attribute(name) <= longest_start_tag;
}

// A character beyond the BMP can stand in a key as one element or as two: the names of two keys can
// be the same, but no element may have an attribute twice.
bool reader_limits_t::is_first_of_name(const xml_text_t& name)
{
    return name.is_plain() || name.utf8().find_first_of("\xF0\xF1\xF2\xF3") == std::string::npos ||
           m_ambiguous_names.insert(name.utf8()).second;
}

} // namespace velmoext_1_4_8

#pragma once

#include "xml/start_tags.h"
#include "xml/xml_text.h"

#include <cstddef>
#include <set>
#include <string>

namespace velmoext_1_4_8
{

/// Tells, while one message is written, what a reader of its document would refuse. libxml2 stops
/// at the first thing beyond its limits, and in a log all later messages would go with it.
class reader_limits_t
{
public:
    /// Whether the key can name an attribute or element: it is an XML name that libxml2 can take
    /// apart, not too long, and the reader's dictionary still has room for it. `name` is the key in
    /// UTF-8.
    bool admit_name(const std::wstring& key, const xml_text_t& name);

    /// Whether the start tag still takes this attribute, and has no other of that name.
    bool admit_attribute(const xml_text_t& name, const xml_text_t& value);

    /// Whether an argument of this name fits into a start tag of its own.
    static bool admits_arg(const xml_text_t& name);

private:
    bool is_first_of_name(const xml_text_t& name);

    static constexpr std::size_t longest_name = 50000;
    /// libxml2 holds the whole tag in a window of 10,000,000 bytes, with some of what surrounds it.
    static constexpr std::size_t longest_start_tag = 9990000;
    /// The dictionary takes 10,000,000 bytes at most, badly filled and with up to two entries for a
    /// name.
    static constexpr std::size_t longest_names = 3500000;

    std::size_t m_names_left = longest_names;
    std::size_t m_attributes_left = most_attributes;
    std::size_t m_start_tag_left = longest_start_tag;
    std::set<std::string> m_ambiguous_names;
};

} // namespace velmoext_1_4_8

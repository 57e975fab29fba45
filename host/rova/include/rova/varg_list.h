/// @file
#pragma once

#include <rova/export.h>
#include <rova/variant.h>

#include <cstddef>
#include <string>
#include <vector>

namespace ROVA_2_18
{
namespace generic
{

/// One named argument of a text: a name in UTF-8 and a value.
class ROVA_API argument
{
public:
    argument(std::string name, types::variant value);

    const std::string& name() const { return m_name; }
    const types::variant& value() const { return m_value; }

private:
    std::string m_name;
    types::variant m_value;
};

/// An ordered list of named arguments. Names can repeat.
///
/// Thread safety: not synchronized. Any number of threads may read a list if none modifies it.
class ROVA_API varg_list
{
public:
    typedef std::vector<argument>::const_iterator const_iterator;

    void push_back(argument added);

    bool empty() const { return m_arguments.empty(); }
    std::size_t size() const { return m_arguments.size(); }
    const_iterator begin() const { return m_arguments.begin(); }
    const_iterator end() const { return m_arguments.end(); }

private:
    std::vector<argument> m_arguments;
};

} // namespace generic
} // namespace ROVA_2_18

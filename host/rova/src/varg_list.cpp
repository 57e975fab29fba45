#include <rova/varg_list.h>

namespace ROVA_2_18
{
namespace generic
{

argument::argument(const std::string& name, const types::variant& value)
    : m_name(name), m_value(value)
{}

void varg_list::push_back(const argument& added)
{
    m_arguments.push_back(added);
}

} // namespace generic
} // namespace ROVA_2_18

#include <rova/varg_list.h>

#include <utility>

namespace ROVA_2_18
{
namespace generic
{

argument::argument(std::string name, types::variant value)
    : m_name(std::move(name)), m_value(std::move(value))
{}

void varg_list::push_back(argument added)
{
    m_arguments.push_back(std::move(added));
}

} // namespace generic
} // namespace ROVA_2_18

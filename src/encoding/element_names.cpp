#include "encoding/element_names.h"

namespace velmoext_1_4_8
{

std::wstring generate_arg_name(std::int32_t& next_arg_number)
{
    std::wstring name = L"arg" + std::to_wstring(next_arg_number);
    next_arg_number = static_cast<std::int32_t>(static_cast<std::uint32_t>(next_arg_number) + 1U);
    return name;
}

} // namespace velmoext_1_4_8

#pragma once

#include <cstdint>
#include <string>

namespace velmoext_1_4_8
{

/// The names in a message's XML form, shared by everything that writes or reads it.
struct element_names
{
    static constexpr char log[] = "log";
    static constexpr char msg[] = "msg";
    static constexpr char arg[] = "arg";
    static constexpr char arg_name[] = "name";
    static constexpr char type[] = "type";
    static constexpr char severity[] = "severity";
};

/// Returns the name of an argument that has none in XML: "arg" and the message's next number. The
/// number is incremented and wraps to the smallest.
std::wstring generate_arg_name(std::int32_t& next_arg_number);

} // namespace velmoext_1_4_8

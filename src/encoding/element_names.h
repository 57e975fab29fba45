#pragma once

#include <cstdint>
#include <string>

namespace velmoext_1_4_8
{

/// The names in a message's XML form, shared by everything that writes or reads it.
struct element_names
{
    static constexpr const char* log = "log";
    static constexpr const char* msg = "msg";
    static constexpr const char* arg = "arg";
    static constexpr const char* arg_name = "name";
    static constexpr const char* type = "type";
    static constexpr const char* severity = "severity";
};

/// Returns the name of an argument that has none in XML: "arg" and the message's next number. The
/// number is incremented and wraps to the smallest.
std::wstring generate_arg_name(std::int32_t& next_arg_number);

} // namespace velmoext_1_4_8

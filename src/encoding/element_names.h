#pragma once

#include <cstdint>
#include <string>

namespace velmoext_1_4_8
{

/// The names in a message's XML form, shared by everything that writes or reads it.
namespace element_names
{
inline constexpr char log[] = "log";
inline constexpr char msg[] = "msg";
inline constexpr char arg[] = "arg";
inline constexpr char arg_name[] = "name";
inline constexpr char type[] = "type";
inline constexpr char severity[] = "severity";
} // namespace element_names

/// Returns the name of an argument that has none in XML: "arg" and the message's next number. The
/// number is incremented and wraps to the smallest.
std::wstring generate_arg_name(std::int32_t& next_arg_number);

} // namespace velmoext_1_4_8

#pragma once

#include <libxml/xmlstring.h>

#include <cstdint>
#include <string>

namespace velmoext_1_4_8
{

/// The names of a message's XML form; all that writes and reads one takes them from here.
struct element_names
{
    static constexpr const char* log = "log";
    static constexpr const char* msg = "msg";
    static constexpr const char* arg = "arg";
    static constexpr const char* arg_name = "name";
    static constexpr const char* type = "type";
    static constexpr const char* severity = "severity";
};

inline const xmlChar* to_xml(const char* text)
{
    return reinterpret_cast<const xmlChar*>(text);
}

inline const xmlChar* to_xml(const std::string& text)
{
    return to_xml(text.c_str());
}

inline const char* from_xml(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

/// The name of an argument that came without one: "arg" and the message's next number, which is
/// counted up and, at its end, goes on with the smallest.
std::wstring generate_arg_name(std::int32_t& next_arg_number);

} // namespace velmoext_1_4_8

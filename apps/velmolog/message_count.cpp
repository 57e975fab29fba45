#include "message_count.h"

#include <cstddef>
#include <string_view>

namespace velmolog
{
namespace
{

using velmoext_1_4_8::log_reader_t;
using velmoext_1_4_8::message_t;

// Returns whether any element "type" begins with a text.
bool has_type_with_text(std::string_view element)
{
    const std::string_view tag = "<type>";
    for (std::size_t at = element.find(tag); at != std::string_view::npos;
         at = element.find(tag, at)) {
        at += tag.size();
        if (element.substr(at, 1) != "<")
            return true;
    }
    return false;
}

// A start reads the text that is last in a type, and finds none in "<": see docs/fidelity.md. It
// passes over an element without text.
bool is_carried(const log_reader_t& reader)
{
    const std::string_view type = reader.get_type();
    if (reader.get_severity() != message_t::none)
        return true;
    return type.empty() ? has_type_with_text(reader.get_text()) : type.back() != '<';
}

} // namespace

void message_count_t::add(const log_reader_t& reader)
{
    ++m_all;
    if (!m_has_damage && is_carried(reader))
        ++m_carried;
}

} // namespace velmolog

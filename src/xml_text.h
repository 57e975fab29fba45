#pragma once

#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{

/// The text in UTF-8, with U+FFFD for each character that XML 1.0 cannot carry.
std::string xml_text(const std::wstring& text);

/// Whether the text is a name as XML 1.0 knows it in its fifth edition; its length does not matter.
bool is_xml_name(const std::wstring& text);

/// How many bytes the writer makes of an attribute's value.
std::size_t size_as_xml_attribute(const std::string& value);

} // namespace velmoext_1_4_8

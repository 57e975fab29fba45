#pragma once

#include <cstddef>
#include <string>

namespace velmoext_1_4_8
{

/// So many attributes of an element are read; a message has few.
constexpr std::size_t most_attributes = 1000;

/// Blanks what the start tags of a document have beyond them: libxml2 compares each attribute of a
/// tag with all before it.
void leave_out_excess_attributes(std::string& document);

/// Whether so many namespaces are declared that libxml2 would take long: it looks for that of each
/// name among all of them.
bool has_too_many_namespaces(const std::string& document);

} // namespace velmoext_1_4_8

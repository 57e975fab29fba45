#pragma once

#include <string>

namespace velmoext_1_4_8
{

/// Whether the document declares an encoding that does not write markup as ASCII does, or may not,
/// or is in EBCDIC: nobody but libxml2 can look at such a document.
bool hides_its_markup(const std::string& document);

/// Cuts such a document off at its beginning: it is damaged there.
void cut_hidden_markup(std::string& document);

} // namespace velmoext_1_4_8

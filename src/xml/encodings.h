#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmoext_1_4_8
{

/// Returns the encoding that the document's XML declaration names; empty when it names none, or
/// none that XML allows.
std::string declared_encoding(std::string_view document);

/// Returns whether an encoding from a declaration is UTF-8, which an empty one means too.
bool is_utf8(std::string_view encoding);

/// Converts a document to UTF-8 with libxml2's converters, up to the first byte that the encoding
/// does not have, or a little further than until `utf8` has `sufficient_size` bytes. Returns how
/// many bytes of the document were passed to the converter, and sets `unconverted` to the number of
/// those that it has not converted. Returns nothing, with `utf8` unchanged,
/// when no converter knows the encoding. Throws std::bad_alloc, with `utf8` unspecified, when
/// libxml2 runs out of memory.
std::optional<std::size_t> convert_to_utf8(std::string_view document, const std::string& encoding,
                                           std::string& utf8,
                                           std::size_t sufficient_size = std::string::npos,
                                           std::size_t* unconverted = nullptr);

} // namespace velmoext_1_4_8

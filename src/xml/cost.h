#pragma once

#include "xml/limits.h"

#include <cstddef>
#include <string_view>

namespace velmoext_1_4_8
{

/// The result of inspect_markup().
struct markup_t
{
    /// The limit that the document exceeds, if any: refusal_t::none when libxml2's work is linear
    /// in the document's size or within the limits.
    refusal_t refusal = refusal_t::none;
    /// The offset of the first fault in the markup, or the document's size.
    std::size_t well_formed_bytes = 0;
};

/// How libxml2 is to parse a document.
enum class parse_t
{
    tree,
    events ///< of SAX1, which knows neither namespaces nor defaults nor entities
};

/// Looks through the markup of a document in UTF-8, or in an encoding that writes markup like
/// ASCII.
markup_t inspect_markup(std::string_view document, parse_t parse);

} // namespace velmoext_1_4_8

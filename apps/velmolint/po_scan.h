#pragma once

#include "finding.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velmolint
{

/// Positions of the entries of a `.po` file, which gettext's library does not report. Obsolete
/// entries are left out.
struct po_scan_t
{
    struct entry_t
    {
        position_t id;
        position_t text;
    };

    std::vector<entry_t> entries; ///< in their order in the file
    /// The file without its comments, except flags. gettext's time is quadratic in the number of
    /// source references.
    std::string text;
    std::size_t header_size = 0; ///< of `text`, up to the second entry
};

/// Scans a file in UTF-8.
po_scan_t scan_po(const std::string& text);

} // namespace velmolint

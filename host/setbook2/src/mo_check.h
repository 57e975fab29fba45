#pragma once

#include <vector>

namespace setbook2
{

/// Whether the bytes are a `.mo` file whose every offset leads to where it may: its reader looks at
/// few of them itself. Only what msgfmt makes by default of a UTF-8 file is let through, so that
/// the texts are looked up in the bytes as they are.
bool is_sound_mo(const std::vector<char>& bytes);

} // namespace setbook2

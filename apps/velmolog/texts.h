#pragma once

#include <string>

namespace velmolog
{

/// The title and the text of a message, in UTF-8 and not escaped.
struct texts_t
{
    std::string title; ///< may be empty
    std::string text;  ///< is never empty
};

} // namespace velmolog

#pragma once

#include <string_view>

namespace velmolog
{

// The build writes them from the files in page/.
extern const std::string_view page_before_data;  ///< the page up to its data
extern const std::string_view page_between_data; ///< from the rows to the strings
extern const std::string_view page_after_data;   ///< the rest of the page

} // namespace velmolog

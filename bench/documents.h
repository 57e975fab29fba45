#pragma once

#include "workload.h"

namespace bench
{

/// The first messages as documents in UTF-8, as the library writes them.
std::vector<std::string> make_documents(const workload_t& workload, std::size_t count);

} // namespace bench

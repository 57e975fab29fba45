#pragma once

#include "candidate.h"
#include "json_text.h"

namespace velmolog
{

/// Returns the message as an object, as it is documented in velmolog(1).
json_t json_of(candidate_t& candidate);

} // namespace velmolog

#pragma once

#include "runner.h"

namespace bench
{

/// Other libraries that do a subject's work. Which ones there are is decided where the programs are
/// linked: each peer's source registers what it can do.
typedef candidate_t (*peer_t)(const workload_t& workload);

/// For an object of static storage duration; answers true.
bool register_peer(const std::string& subject, peer_t peer);

void add_peers(subject_t& subject, const workload_t& workload);

} // namespace bench

#pragma once

#include "runner.h"

namespace bench
{

/// Creates the candidate of a peer, another library that does a subject's work. The source of each
/// peer registers its candidates, so linking it adds the peer to a program.
typedef candidate_t (*peer_t)(const workload_t& workload);

/// Registers a peer and returns true, to initialize an object of static storage duration.
bool register_peer(const std::string& subject, peer_t peer);

void add_peers(subject_t& subject, const workload_t& workload);

} // namespace bench

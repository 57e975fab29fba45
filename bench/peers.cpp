#include "peers.h"

#include <map>

namespace bench
{
namespace
{

typedef std::multimap<std::string, peer_t> peers_t;

peers_t& peers()
{
    static peers_t all;
    return all;
}

} // namespace

bool register_peer(const std::string& subject, peer_t peer)
{
    peers().emplace(subject, peer);
    return true;
}

void add_peers(subject_t& subject, const workload_t& workload)
{
    const auto [first, last] = peers().equal_range(subject.name);
    for (auto at = first; at != last; ++at)
        subject.candidates.push_back(at->second(workload));
}

} // namespace bench

#pragma once

#include "runner.h"

namespace bench
{

/// The first messages as documents in UTF-8, as the library writes them.
std::vector<std::string> make_documents(const workload_t& workload, std::size_t count);

/// Makes a document of each plain message; `encode` returns its size.
candidate_t make_encoder(const std::string& name, const workload_t& workload,
                         std::size_t (*encode)(const plain_message_t& message));

/// Reads each document; `decode` returns how many messages it found in one.
candidate_t make_decoder(const std::string& name, const workload_t& workload,
                         std::size_t (*decode)(const std::string& document));

/// What `step` makes of each of the first items, added up.
template <typename Items, typename Step>
std::size_t sum_over(const Items& items, std::size_t count, const Step& step)
{
    std::size_t sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += step(items[i]);
    return sum;
}

} // namespace bench

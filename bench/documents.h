#pragma once

#include "runner.h"

namespace bench
{

/// Returns the first `count` messages as documents in UTF-8, as the library writes them.
std::vector<std::string> make_documents(const workload_t& workload, std::size_t count);

/// Returns a candidate that writes a document of each plain message. `encode` returns its size.
candidate_t make_encoder(const std::string& name, const workload_t& workload,
                         std::size_t (*encode)(const plain_message_t& message));

/// Returns a candidate that reads each document. `decode` returns the number of messages found.
candidate_t make_decoder(const std::string& name, const workload_t& workload,
                         std::size_t (*decode)(const std::string& document));

/// Returns the sum of the results of `step` for the first `count` items.
template <typename Items, typename Step>
std::size_t sum_over(const Items& items, std::size_t count, const Step& step)
{
    std::size_t sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += step(items[i]);
    return sum;
}

} // namespace bench

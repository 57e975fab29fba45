#pragma once

#include "name_counter.h"

#include <velmoext1/message.h>

#include <array>
#include <cstdint>
#include <ostream>
#include <string_view>

namespace velmolog
{

/// The numbers of messages.
struct stats_t
{
    std::uint64_t messages = 0;
    std::array<std::uint64_t, 5> severities = {}; ///< in the order of message_t::severity_t
    name_counter_t sources;
    name_counter_t types;

    void add(velmoext_1_4_8::message_t::severity_t severity, std::string_view source,
             std::string_view type);
};

/// Writes tables, with bars if they are wanted.
void write_tables(std::ostream& output, const stats_t& stats, bool has_bars);

/// Writes one object.
void write_json(std::ostream& output, const stats_t& stats);

} // namespace velmolog

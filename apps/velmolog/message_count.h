#pragma once

#include <velmoext1/log_reader.h>

#include <cstdint>

namespace velmolog
{

/// Counts the messages of a log, and those of them that remain if a recorder's start rewrites it.
///
/// A start that rewrites a log writes its messages again, in their order and at other offsets, and
/// texts can change. It leaves out the messages after the first damage, and those that it reads
/// without type and severity. So a program that has shown messages of the old log continues after
/// carried() messages of the new one.
class message_count_t
{
public:
    /// Counts the message that the reader is at.
    void add(const velmoext_1_4_8::log_reader_t& reader);
    void add_damage() { m_has_damage = true; }

    std::uint64_t all() const { return m_all; }
    std::uint64_t carried() const { return m_carried; }
    bool has_damage() const { return m_has_damage; }

private:
    std::uint64_t m_all = 0;
    std::uint64_t m_carried = 0;
    bool m_has_damage = false;
};

} // namespace velmolog

#include "stable_reader.h"

#include "utc_time.h"

#include <algorithm>
#include <utility>

namespace velmolog
{
namespace
{

const std::size_t max_batch_messages = 500;
const std::size_t max_batch_bytes = 1048576;

// A text that is longer is read and compared again at intervals only: in a tenth of the time.
const std::size_t max_unfinished_bytes = 262144;
const int pause_factor = 9;

// Damage that is longer is not read again. Its last bytes may belong to a message.
const std::size_t max_damage_bytes = 33554432;

} // namespace

stable_reader_t::stable_reader_t(std::string log, int descriptor)
    : m_log(std::move(log)), m_descriptor(descriptor), m_bytes(descriptor)
{
    begin_again(0);
}

stable_reader_t::result_t stable_reader_t::read(bool is_thorough, std::vector<entry_t>& entries)
{
    const steady_clock_t::time_point begin = steady_clock_t::now();
    if (begin < m_next_look)
        return result_t::nothing;
    batch_t batch = collect();
    const bool is_same = m_bytes.has_same_unreleased();
    if (!m_bytes.has_same_released(is_thorough))
        return result_t::replaced;
    if (!is_same) {
        restart();
        return result_t::more;
    }
    accept(batch, entries);
    const steady_clock_t::time_point end = steady_clock_t::now();
    if (m_bytes.unreleased() > max_unfinished_bytes &&
        batch.result != log_reader_t::result_t::message)
        m_next_look = end + pause_factor * (end - begin);
    return batch.result == log_reader_t::result_t::message ? result_t::more : result_t::nothing;
}

// A text after the first damage can be released while it is read.
std::size_t stable_reader_t::read_source(char* bytes, std::size_t size)
{
    if (m_first_damage && m_bytes.unreleased() > 2 * max_damage_bytes)
        m_bytes.release(m_bytes.read_size() - static_cast<std::int64_t>(max_damage_bytes));
    return m_bytes.read(bytes, size);
}

// The result is that of a message if the batch is full.
stable_reader_t::batch_t stable_reader_t::collect()
{
    batch_t batch;
    batch.skipped = m_skipped;
    batch.end = m_position;
    const std::size_t max_unreleased = m_bytes.unreleased() + max_batch_bytes;
    for (std::size_t i = 0; i < max_batch_messages && m_bytes.unreleased() < max_unreleased; ++i) {
        batch.result = m_reader->next();
        if (batch.result == log_reader_t::result_t::message)
            add_message(batch);
        else if (batch.result == log_reader_t::result_t::damage)
            add_damage(batch);
        else
            return batch;
        if (batch.first_damage)
            break;
    }
    batch.result = log_reader_t::result_t::message;
    return batch;
}

void stable_reader_t::add_message(batch_t& batch)
{
    if (batch.skipped > 0)
        --batch.skipped;
    else if (auto message = m_reader->get_message())
        batch.entries.push_back({m_log, m_reader->get_begin(), std::move(message), utc_time_now(),
                                 std::string(m_reader->get_text())});
    batch.end.at = m_reader->get_end();
    batch.end.count.add(*m_reader);
    batch.known = batch.end.at.offset;
}

void stable_reader_t::add_damage(batch_t& batch) const
{
    if (!batch.end.count.has_damage())
        batch.first_damage = batch.end;
    batch.end.count.add_damage();
    batch.known = m_reader->get_begin().offset;
}

void stable_reader_t::accept(batch_t& batch, std::vector<entry_t>& entries)
{
    if (m_position.count.all() == 0 && m_skipped == 0 && !batch.entries.empty())
        m_first = batch.entries.front().message;
    if (batch.first_damage) {
        m_bytes.release(batch.first_damage->at.offset);
        m_first_damage = batch.first_damage;
        m_bytes_before_damage = m_bytes.released_bytes();
    }
    m_position = batch.end;
    m_skipped = batch.skipped;
    m_has_damage = m_has_damage || batch.end.count.has_damage();
    m_has_ended = batch.result == log_reader_t::result_t::end;
    m_bytes.release(batch.known);
    entries.insert(entries.end(), std::make_move_iterator(batch.entries.begin()),
                   std::make_move_iterator(batch.entries.end()));
}

// Reads what was not released again. The offsets in a log that is not in UTF-8 are not those in the
// file.
void stable_reader_t::restart()
{
    if (m_bytes.released() == m_position.at.offset)
        read_from(m_position, m_bytes.released_bytes());
    else
        begin_again(m_position.count.all() + m_skipped);
}

bool stable_reader_t::go_back_before_damage()
{
    if (!m_first_damage || !m_bytes_before_damage.is_same(m_descriptor))
        return false;
    const position_t position = *m_first_damage;
    read_from(position, m_bytes_before_damage);
    m_first_damage.reset();
    return true;
}

void stable_reader_t::begin_again(std::uint64_t skipped)
{
    m_skipped = skipped;
    m_first.reset();
    m_first_damage.reset();
    read_from(position_t(), checked_bytes_t());
}

void stable_reader_t::read_from(const position_t& position, const checked_bytes_t& bytes)
{
    m_next_look = steady_clock_t::time_point();
    m_position = position;
    m_bytes.go_back(bytes);
    const auto source = [this](char* to, std::size_t size) {
        return read_source(to, size);
    };
    m_reader = position.at.offset == 0 ? std::make_unique<log_reader_t>(source)
                                       : std::make_unique<log_reader_t>(source, position.at);
}

} // namespace velmolog

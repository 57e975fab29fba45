#include "storage/log_text.h"

#include <algorithm>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

// Most logs are short, and long ones are read faster in long chunks.
const std::size_t min_chunk_bytes = 8192;
const std::size_t max_chunk_bytes = 262144;

// A longer text is only searched again when it has doubled.
const std::size_t max_short_text_bytes = 4096;

} // namespace

log_text_t::log_text_t(source_t source, const position_t& position)
    : m_source(std::move(source)), m_position(position)
{}

std::string_view log_text_t::text() const
{
    return std::string_view(m_bytes.data() + m_begin, m_end - m_begin);
}

bool log_text_t::read_more()
{
    std::copy(m_bytes.data() + m_begin, m_bytes.data() + m_end, m_bytes.data());
    m_end -= m_begin;
    m_begin = 0;
    const std::size_t unread = m_end;
    const std::size_t chunk = std::clamp(2 * m_bytes.size(), min_chunk_bytes, max_chunk_bytes);
    const std::size_t needed = unread + std::max(chunk, unread);
    if (m_bytes.size() < needed)
        m_bytes.resize(needed);
    // A source may have a few bytes at a time, and wait for the next ones after a whole message.
    std::size_t read = m_source ? m_source(m_bytes.data() + m_end, needed - m_end) : 0;
    m_end += read;
    while (read != 0 && unread > max_short_text_bytes && m_end - unread < unread) {
        read = m_source(m_bytes.data() + m_end, needed - m_end);
        m_end += read;
    }
    return m_end != unread;
}

void log_text_t::assign(const std::string& text)
{
    m_source = nullptr;
    m_bytes.assign(text.begin(), text.end());
    m_begin = 0;
    m_end = text.size();
}

void log_text_t::skip(std::size_t size)
{
    m_position = position_of(size);
    m_begin += size;
}

void log_text_t::skip(std::size_t size, std::int64_t line_ends)
{
    m_position.offset += static_cast<std::int64_t>(size);
    m_position.line += line_ends;
    m_begin += size;
}

log_text_t::position_t log_text_t::position_of(std::size_t offset) const
{
    const std::string_view passed = text().substr(0, offset);
    position_t position = m_position;
    position.offset += static_cast<std::int64_t>(passed.size());
    position.line += std::count(passed.begin(), passed.end(), '\n');
    return position;
}

} // namespace velmoext_1_4_8

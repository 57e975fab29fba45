#include <velmoext1/log_reader.h>

#include "storage/file_descriptor.h"
#include "storage/log_reader_impl.h"

#include <utility>

namespace velmoext_1_4_8
{

log_reader_t::log_reader_t(const basekit2::path_t& path)
{
    auto file = std::make_shared<file_descriptor_t>();
    const bool is_open = file->open(true, path);
    const auto source = [file, offset = std::int64_t()](char* bytes, std::size_t size) mutable {
        const std::size_t read = file->read(offset, bytes, size);
        offset += static_cast<std::int64_t>(read);
        return read;
    };
    m_impl = std::make_unique<log_reader_impl_t>(source, position_t());
    if (!is_open)
        m_impl->set_unreadable();
}

log_reader_t::log_reader_t(source_t source) : log_reader_t(std::move(source), position_t()) {}

log_reader_t::log_reader_t(source_t source, const position_t& position)
    : m_impl(std::make_unique<log_reader_impl_t>(std::move(source), position))
{}

log_reader_t::~log_reader_t() = default;

log_reader_t::result_t log_reader_t::next()
{
    return m_impl->next();
}

void log_reader_t::skip_unfinished()
{
    m_impl->skip_unfinished();
}

log_reader_t::position_t log_reader_t::get_begin() const
{
    return m_impl->begin();
}

log_reader_t::position_t log_reader_t::get_end() const
{
    return m_impl->end();
}

log_reader_t::damage_t log_reader_t::get_damage() const
{
    return m_impl->damage();
}

std::string_view log_reader_t::get_text() const
{
    return m_impl->text();
}

std::string_view log_reader_t::get_type() const
{
    return m_impl->type();
}

std::string_view log_reader_t::get_source() const
{
    return m_impl->source();
}

message_t::severity_t log_reader_t::get_severity() const
{
    return m_impl->severity();
}

boost::shared_ptr<message_t> log_reader_t::get_message()
{
    return m_impl->message();
}

} // namespace velmoext_1_4_8

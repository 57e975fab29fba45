#include <velmoext1/message.h>

#include "core/message_access.h"

namespace velmoext_1_4_8
{
namespace
{

// A source is stored under "tool"; "source" is accepted from others, and preferred.
const std::wstring stored_source_key = L"tool";
const std::wstring preferred_source_key = L"source";
const std::wstring no_source;

} // namespace

message_t::message_t() = default;
message_t::message_t(const message_t& other) = default;
message_t& message_t::operator=(const message_t& other) = default;
message_t::~message_t() = default;

void message_t::set_type(const std::wstring& type)
{
    m_type = type;
}

std::wstring message_t::get_type() const
{
    return m_type;
}

void message_t::set_severity(severity_t severity)
{
    m_severity = severity;
}

message_t::severity_t message_t::get_severity() const
{
    return m_severity;
}

void message_t::set_flags(int flags)
{
    m_flags = flags;
}

int message_t::get_flags() const
{
    return m_flags;
}

void message_t::set_content(const message_content_t& content)
{
    m_content = content;
}

message_t::message_content_t message_t::get_content() const
{
    return m_content;
}

void message_t::set_source(const std::wstring& source)
{
    m_content.attributes.emplace(stored_source_key, source);
}

std::wstring message_t::get_source() const
{
    return message_access::source(*this);
}

const std::wstring& message_access::source(const message_t& message)
{
    for (const std::wstring* const key : {&preferred_source_key, &stored_source_key}) {
        const auto found = message.m_content.attributes.find(*key);
        if (found != message.m_content.attributes.end())
            return found->second;
    }
    return no_source;
}

bool message_t::equal_to(boost::shared_ptr<message_t> other) const
{
    return other && m_type == other->m_type && m_severity == other->m_severity;
}

bool message_t::empty() const
{
    return m_type.empty() && m_severity == none;
}

} // namespace velmoext_1_4_8

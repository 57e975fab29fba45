#include <velmoext1/message.h>

#include "core/message_access.h"

#include <map>
#include <utility>

namespace velmoext_1_4_8
{
namespace
{

typedef std::map<std::wstring, std::wstring> string_map_t;

// A source is stored under "tool"; "source" is accepted from others, and preferred. The keys are
// never destroyed: destructors of static objects use messages, too.
const std::wstring& stored_source_key()
{
    static const auto* const key = new std::wstring(L"tool");
    return *key;
}

const std::wstring& preferred_source_key()
{
    static const auto* const key = new std::wstring(L"source");
    return *key;
}

const std::wstring* find_text(const string_map_t& texts, const std::wstring& key)
{
    const auto found = texts.find(key);
    return found == texts.end() ? nullptr : &found->second;
}

} // namespace

message_t::message_t() = default;
message_t::message_t(const message_t& other) = default;

// The copy is complete before this message changes, also when it is its own.
// NOLINTNEXTLINE(cert-oop54-cpp)
message_t& message_t::operator=(const message_t& other)
{
    message_content_t content = other.m_content;
    m_type.assign(other.m_type);
    std::swap(m_content, content);
    m_severity = other.m_severity;
    m_flags = other.m_flags;
    return *this;
}

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
    message_content_t copy = content;
    std::swap(m_content, copy);
}

message_t::message_content_t message_t::get_content() const
{
    return m_content;
}

void message_t::set_source(const std::wstring& source)
{
    m_content.attributes.emplace(stored_source_key(), source);
}

std::wstring message_t::get_source() const
{
    const std::wstring* const source = message_access_t::find_source(*this);
    return source ? *source : std::wstring();
}

const std::wstring* message_access_t::find_source(const message_t& message)
{
    const string_map_t& attributes = message.m_content.attributes;
    const std::wstring* const preferred = find_text(attributes, preferred_source_key());
    return preferred ? preferred : find_text(attributes, stored_source_key());
}

void message_access_t::add_tool(message_t& message)
{
    const std::wstring* const source =
        find_text(message.m_content.attributes, preferred_source_key());
    if (source)
        message.set_source(*source);
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

#include "reporter.h"

#include "error_name.h"
#include "message_words.h"

#include <boost/make_shared.hpp>

#include <algorithm>

namespace audit
{
namespace
{

using velmoext::message_t;

const int worth_recording = 1;

} // namespace

reporter_t::reporter_t(velmoext::velmo_adapter_t& channel) : m_channel(channel) {}

void reporter_t::note(const std::wstring& type, const args_t& args)
{
    send(message_t::info, type, args, 0);
}

void reporter_t::find(severity_t severity, const std::wstring& type, const args_t& args)
{
    ++m_findings;
    m_gravest = std::max(m_gravest, severity);
    send(severity, type, args, worth_recording);
}

void reporter_t::find_failure(const std::wstring& type, const std::wstring& path,
                              std::error_code error)
{
    if (error != std::errc::no_such_file_or_directory)
        find(message_t::error, type, {{L"path", path}, {L"error", error_name(error)}});
}

void reporter_t::summarize(severity_t least, const std::wstring& type, args_t args)
{
    args[L"findings"] = std::to_wstring(m_findings);
    send(std::max(least, m_gravest), type, args, worth_recording);
}

void reporter_t::send(severity_t severity, const std::wstring& type, const args_t& args, int flags)
{
    message_t::message_content_t content;
    content.args = args;
    const auto message = boost::make_shared<message_t>();
    message->set_type(type);
    message->set_severity(severity);
    message->set_flags(flags);
    message->set_content(content);
    message->set_source(source_name);
    m_channel.send_to_velmo(message);
}

} // namespace audit

/// @file
#pragma once

#include "library_names.h"

#include <velmoext1/message.h>
#include <velmoext1/velmo_adapter.h>

#include <cstdint>
#include <map>
#include <string>
#include <system_error>

namespace audit
{

/// Reports findings: creates messages with this program as their source, sends them and counts
/// them.
class reporter_t
{
public:
    typedef velmoext::message_t::severity_t severity_t;
    typedef std::map<std::wstring, std::wstring> args_t;

    /// The channel is borrowed.
    explicit reporter_t(velmoext::velmo_adapter_t& channel);

    /// Reports that something was seen, whether its state is good or not. Not worth recording.
    void note(const std::wstring& type, const args_t& args);

    /// Reports something that is worth attention and worth recording.
    void find(severity_t severity, const std::wstring& type, const args_t& args);

    /// Reports a failure at a path. Does nothing if the path does not exist any more, since a tree
    /// that is in use changes during the walk.
    void find_failure(const std::wstring& type, const std::wstring& path, std::error_code error);

    /// Reports the summary, with the severity of the most severe finding, and at least with this
    /// one.
    void summarize(severity_t least, const std::wstring& type, args_t args);

private:
    void send(severity_t severity, const std::wstring& type, const args_t& args, int flags);

    velmoext::velmo_adapter_t& m_channel;
    std::uint64_t m_findings = 0;
    severity_t m_gravest = velmoext::message_t::info;
};

} // namespace audit

/// @file
#pragma once

namespace velmo2
{

/// The host's severity of a line of text.
enum ESeverity
{
    debug = 0,
    info = 1,
    warning = 2,
    error = 3
};

/// The host's text channel: one line of text per call, on the reporting thread. Several threads can
/// call it at once if the program reports from several.
class IMessenger
{
public:
    /// Receives a zero-terminated text, which is valid during the call only.
    virtual void say(ESeverity severity, const wchar_t* text) = 0;

    virtual ~IMessenger() = default;

protected:
    IMessenger() = default;
    IMessenger(const IMessenger&) = default;
    IMessenger& operator=(const IMessenger&) = default;
};

} // namespace velmo2

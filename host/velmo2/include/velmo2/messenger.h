/// @file
#pragma once

namespace velmo2
{

/// How the host marks a line of text.
enum ESeverity
{
    debug = 0,
    info = 1,
    warning = 2,
    error = 3
};

/// The host's channel to the user: one line of text at a time. Called on the thread that reports.
class IMessenger
{
public:
    /// Takes a text that ends at its first zero; it is valid only during the call.
    virtual void say(ESeverity severity, const wchar_t* text) = 0;

    virtual ~IMessenger() = default;

protected:
    IMessenger() = default;
    IMessenger(const IMessenger&) = default;
    IMessenger& operator=(const IMessenger&) = default;
};

} // namespace velmo2

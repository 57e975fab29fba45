/// @file
#pragma once

#include <velmo2/messenger.h>

#include <cstdint>

namespace audit
{

/// The host's channel: passes every text on to the receiver and counts the texts.
class channel_t : public velmo2::IMessenger
{
public:
    /// The receiver is borrowed.
    explicit channel_t(velmo2::IMessenger& receiver) : m_receiver(receiver) {}

    void say(velmo2::ESeverity severity, const wchar_t* text) override
    {
        ++m_count;
        m_receiver.say(severity, text);
    }

    /// Returns the number of texts that have passed.
    std::uint64_t count() const { return m_count; }

private:
    velmo2::IMessenger& m_receiver;
    std::uint64_t m_count = 0;
};

} // namespace audit

#pragma once

#include "world.h"

#include <velmoext1/base_handler.h>

#include <string>
#include <vector>

namespace soak
{

/// Checks each message. Accepts null, which is delivered if a text was not a message.
class checking_handler_t : public velmoext_1_4_8::base_handler_t
{
public:
    checking_handler_t(world_t& world, bool consumes) : m_world(world), m_consumes(consumes) {}

    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext_1_4_8::message_t> msg) override;

private:
    world_t& m_world;
    const bool m_consumes;
};

/// Records the text of each message, for the thread that sends and so delivers it.
class text_recording_handler_t : public velmoext_1_4_8::base_handler_t
{
public:
    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext_1_4_8::message_t> msg) override;

    /// Returns the texts that all handlers of this class recorded on this thread since the last
    /// call.
    static std::vector<std::wstring> take_texts();

private:
    static thread_local std::vector<std::wstring> m_texts;
};

/// Flags each message for recording.
class flagging_handler_t : public velmoext_1_4_8::base_handler_t
{
public:
    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext_1_4_8::message_t> msg) override;
};

/// Sends each message to another object.
class forwarding_handler_t : public velmoext_1_4_8::base_handler_t
{
public:
    explicit forwarding_handler_t(boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> target);

    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> ex,
                    boost::shared_ptr<velmoext_1_4_8::message_t> msg) override;

private:
    const boost::shared_ptr<velmoext_1_4_8::velmo_ex_t> m_target;
};

/// Sends a text to an object, as the host's channel does.
void say_to(const boost::shared_ptr<velmoext_1_4_8::velmo_ex_t>& ex, const std::wstring& text);

} // namespace soak

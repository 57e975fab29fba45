/// @file
#pragma once

#include <velmoext1/export.h>
#include <velmoext1/message.h>
#include <velmoext1/velmo_ex.h>

#include <velmo2/messenger.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace velmoext_1_4_8
{

/// Carries messages over the host's text channel, in both directions. Outbound it says a message's
/// XML text to a host messenger; inbound it is itself a host messenger, which turns such a text
/// back into a message and delivers it to an extension object.
///
/// It shares the extension object and only borrows the host messenger, which must outlive its use;
/// so does a copy. The two directions know nothing of each other. Nothing is locked: any number of
/// threads may send and say at once, but nobody may set an output meanwhile.
class VELMOEXT1_API velmo_adapter_t : public velmo2::IMessenger
{
public:
    /// Both outputs unset.
    velmo_adapter_t();
    velmo_adapter_t(const velmo_adapter_t& other);
    velmo_adapter_t& operator=(const velmo_adapter_t& other);
    ~velmo_adapter_t() override;

    /// Where send_to_velmo() says its texts; null is accepted.
    void set_output_velmo(velmo2::IMessenger* messenger);
    /// Where texts said to this adapter are delivered; null switches delivery off.
    void set_output_velmoext(boost::shared_ptr<velmo_ex_t> ex);

    /// The text that send_to_velmo() would say, see
    /// string_message_serializer_t::message_to_xml_string().
    std::wstring encode_to_velmo(boost::shared_ptr<message_t> msg);

    /// Says the message's text to the host messenger, with the host's severity 1. The message's own
    /// severity travels inside the text. Requires a host messenger. Exceptions of the messenger
    /// pass out.
    void send_to_velmo(boost::shared_ptr<message_t> msg);

protected:
    /// Delivers the message that `text` holds to the extension object's handlers, null if it holds
    /// none. Ignores the host's severity. Does nothing without an extension object; otherwise
    /// `text` must not be null. Exceptions of a handler pass out. Throws boost::bad_weak_ptr if
    /// there is a handler but the extension object has no owner.
    void say(velmo2::ESeverity severity, const wchar_t* text) override;

private:
    boost::shared_ptr<velmo_ex_t> m_output_velmoext;
    velmo2::IMessenger* m_output_velmo = nullptr; ///< not owned
};

} // namespace velmoext_1_4_8

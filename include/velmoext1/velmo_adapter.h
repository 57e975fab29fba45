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

/// Adapter between messages and the host's text channel, in both directions.
///
/// Outbound, it passes the XML text of a message to a host messenger. Inbound, it is a host
/// messenger: it converts such a text to a message and delivers that to an extension object. The
/// two directions are independent. The adapter and its copies share the extension object; they do
/// not own the host messenger, which must outlive its use.
///
/// Thread safety: any number of threads may send, encode and say at once, if none sets an output.
class VELMOEXT1_API velmo_adapter_t : public velmo2::IMessenger
{
public:
    /// Creates an adapter without outputs.
    velmo_adapter_t();
    velmo_adapter_t(const velmo_adapter_t& other);
    velmo_adapter_t& operator=(const velmo_adapter_t& other);
    ~velmo_adapter_t() override;

    /// Sets the messenger for send_to_velmo(), or null for none.
    void set_output_velmo(velmo2::IMessenger* messenger);
    /// Sets the extension object to which say() delivers, or null for none.
    void set_output_velmoext(boost::shared_ptr<velmo_ex_t> ex);

    /// Returns the text that send_to_velmo() would send, see
    /// string_message_serializer_t::message_to_xml_string().
    std::wstring encode_to_velmo(boost::shared_ptr<message_t> msg);

    /// Passes the text of the message to the host messenger, with velmo2::info. The severity of the
    /// message is part of the text. Requires a host messenger. Propagates its exceptions.
    void send_to_velmo(boost::shared_ptr<message_t> msg);

protected:
    /// Called by the host through velmo2::IMessenger. Delivers the message in `text` to the
    /// extension object. Delivers null if string_message_serializer_t cannot read it: it is not a
    /// message, exceeds a limit, or libxml2 ran out of memory. Ignores the host's severity. Does
    /// nothing without an extension object; otherwise `text` must not be null.
    ///
    /// Propagates the exceptions of handlers. Throws boost::bad_weak_ptr if there is a handler but
    /// the extension object has no owner. This needs a pointer that does not own the object; one
    /// from velmo_ex_t::get() does.
    void say(velmo2::ESeverity severity, const wchar_t* text) override;

private:
    boost::shared_ptr<velmo_ex_t> m_output_velmoext;
    velmo2::IMessenger* m_output_velmo = nullptr; ///< not owned
};

} // namespace velmoext_1_4_8

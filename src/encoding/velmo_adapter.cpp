#include <velmoext1/velmo_adapter.h>

#include <velmoext1/string_message_serializer.h>

#include <utility>

namespace velmoext_1_4_8
{
namespace
{

// Every text goes out under this one mark, whatever the host calls it.
const auto outbound_severity = static_cast<velmo2::ESeverity>(1);

} // namespace

velmo_adapter_t::velmo_adapter_t() = default;
velmo_adapter_t::velmo_adapter_t(const velmo_adapter_t& other) = default;
velmo_adapter_t& velmo_adapter_t::operator=(const velmo_adapter_t& other) = default;
velmo_adapter_t::~velmo_adapter_t() = default;

void velmo_adapter_t::set_output_velmo(velmo2::IMessenger* messenger)
{
    m_output_velmo = messenger;
}

void velmo_adapter_t::set_output_velmoext(boost::shared_ptr<velmo_ex_t> ex)
{
    m_output_velmoext = std::move(ex);
}

std::wstring velmo_adapter_t::encode_to_velmo(boost::shared_ptr<message_t> msg)
{
    return string_message_serializer_t::message_to_xml_string(std::move(msg));
}

void velmo_adapter_t::send_to_velmo(boost::shared_ptr<message_t> msg)
{
    const std::wstring text = encode_to_velmo(std::move(msg));
    m_output_velmo->say(outbound_severity, text.c_str());
}

void velmo_adapter_t::say(velmo2::ESeverity /*severity*/, const wchar_t* text)
{
    // A handler may give this adapter another object, or none.
    const boost::shared_ptr<velmo_ex_t> ex = m_output_velmoext;
    if (ex)
        ex->dispatch_message(string_message_serializer_t::xml_string_to_message(text));
}

} // namespace velmoext_1_4_8

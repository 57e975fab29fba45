#include "handlers.h"

#include "checked_message.h"

#include <velmoext1/string_message_serializer.h>
#include <velmoext1/velmo_adapter.h>

#include <utility>

namespace soak
{

using namespace velmoext_1_4_8;

bool checking_handler_t::on_message(boost::shared_ptr<velmo_ex_t> ex,
                                    boost::shared_ptr<message_t> msg)
{
    m_world.check(ex && (!msg || is_intact(*msg)), "a message is delivered unchanged");
    m_world.count_message();
    return m_consumes;
}

thread_local std::vector<std::wstring> text_recording_handler_t::m_texts;

bool text_recording_handler_t::on_message(boost::shared_ptr<velmo_ex_t> /*ex*/,
                                          boost::shared_ptr<message_t> msg)
{
    m_texts.push_back(string_message_serializer_t::message_to_xml_string(std::move(msg)));
    return false;
}

std::vector<std::wstring> text_recording_handler_t::take_texts()
{
    return std::exchange(m_texts, {});
}

bool flagging_handler_t::on_message(boost::shared_ptr<velmo_ex_t> /*ex*/,
                                    boost::shared_ptr<message_t> msg)
{
    if (msg)
        msg->set_flags(1);
    return false;
}

forwarding_handler_t::forwarding_handler_t(boost::shared_ptr<velmo_ex_t> target)
    : m_target(std::move(target))
{}

bool forwarding_handler_t::on_message(boost::shared_ptr<velmo_ex_t> /*ex*/,
                                      boost::shared_ptr<message_t> msg)
{
    if (msg)
        say_to(m_target, string_message_serializer_t::message_to_xml_string(std::move(msg)));
    return false;
}

void say_to(const boost::shared_ptr<velmo_ex_t>& ex, const std::wstring& text)
{
    velmo_adapter_t adapter;
    adapter.set_output_velmoext(ex);
    static_cast<velmo2::IMessenger&>(adapter).say(velmo2::info, text.c_str());
}

} // namespace soak

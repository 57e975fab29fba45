// Uses the installed library from outside the project: two adapters, one handler, one message.
#include <velmoext1/velmoext1.h>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include <iostream>

using namespace velmoext_1_4_8;

namespace
{

class last_message_t : public base_handler_t
{
public:
    using base_handler_t::on_message;

    bool on_message(boost::shared_ptr<velmo_ex_t>, boost::shared_ptr<message_t> msg) override
    {
        m_last = msg;
        return true;
    }

    boost::shared_ptr<message_t> last() const { return m_last; }

private:
    boost::shared_ptr<message_t> m_last;
};

boost::shared_ptr<message_t> disk_full()
{
    message_t::message_content_t content;
    content.args[L"path"] = L"/srv/<data>";
    auto message = boost::make_shared<message_t>();
    message->set_type(L"disk_full");
    message->set_severity(message_t::error);
    message->set_content(content);
    message->set_source(L"consumer");
    return message;
}

bool arrived_whole(boost::shared_ptr<message_t> sent, boost::shared_ptr<message_t> received)
{
    return received && received->equal_to(sent) && received->get_source() == L"consumer" &&
           received->get_content().args == sent->get_content().args;
}

// Requires a host library as well, as most calls for the configuration do.
bool is_configuration_set()
{
    const auto reader = config_reader_t::get();
    reader->set_cfg_dir(basekit2::path_t(L"/etc/consumer"));
    return reader->get_cfg_dir() == basekit2::path_t(L"/etc/consumer");
}

} // namespace

int main()
{
    if (!is_configuration_set())
        return 1;
    const auto ex = velmo_ex_t::get(L"consumer", L"prefix");
    const auto handler = boost::make_shared<last_message_t>();
    ex->push_handler(handler);

    velmo_adapter_t receiver;
    receiver.set_output_velmoext(ex);
    velmo_adapter_t sender;
    sender.set_output_velmo(&receiver);

    const auto sent = disk_full();
    sender.send_to_velmo(sent);
    if (!arrived_whole(sent, handler->last())) {
        std::cerr << "the message did not arrive as it was sent\n";
        return 1;
    }
    std::cout << "velmoext1 " VELMOEXT1_VERSION ": the message arrived\n";
    return 0;
}

#include <velmoext1/velmoext1.h>

#include <iostream>

using namespace velmoext1;

int main()
{
    const auto ex = velmo_ex_t::get(L"reports", L"demo");
    ex->push_handler(make_handler([&ex](const boost::shared_ptr<message_t>& msg) {
        std::wcout << readable_text(ex, msg) << L'\n';
        return true; // consumed: handlers below are not called
    }));
    velmo_adapter_t receiver; // is a host messenger: a host passes the text on to it
    receiver.set_output_velmoext(ex);
    velmo_adapter_t sender;
    sender.set_output_velmo(&receiver);
    message_builder_t message(L"file_large");
    message.severity(message_t::warning).source(L"audit").arg(L"path", L"/var/log/syslog");
    sender.send_to_velmo(message.build()); // prints "file_large path=/var/log/syslog"
}

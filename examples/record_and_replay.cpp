// Sends two messages, records one in a log and replays the log: record_and_replay LOG
// Shows both when they are sent. A second run carries the messages of the first one over.
#include <velmoext1/velmoext1.h>

#include <rova/strings.h>

#include <cstdlib>
#include <iostream>

using namespace velmoext1;

namespace
{

void send(velmo2::IMessenger& channel, const message_builder_t& message)
{
    velmo_adapter_t sender;
    sender.set_output_velmo(&channel);
    sender.send_to_velmo(message.build());
}

boost::shared_ptr<base_handler_t> make_printer(const std::wstring& label)
{
    return make_handler([label](const boost::shared_ptr<message_t>& msg) {
        std::wcout << label << plain_text(*msg) << L'\n';
        return true; // consumed: this is the last handler
    });
}

bool record(const boost::shared_ptr<messages_storage_t>& storage)
{
    const auto ex = velmo_ex_t::get(L"recorder", L"");
    // The handler that is pushed last is called first. Flags do not cross the channel.
    ex->push_handler(make_printer(L"shown: "));
    ex->push_handler(storage);
    ex->push_handler(make_flagger(message_t::warning, 1));
    if (!storage->start_recording())
        return false;
    velmo_adapter_t channel;
    channel.set_output_velmoext(ex);
    send(channel, message_builder_t(L"file_seen").severity(message_t::info));
    send(channel, message_builder_t(L"file_large").severity(message_t::warning).arg(L"size", 4096));
    return storage->stop_recording();
}

bool replay(const boost::shared_ptr<messages_storage_t>& storage)
{
    const auto ex = velmo_ex_t::get(L"player", L"");
    ex->push_handler(make_printer(L"replayed: "));
    return storage->start_reading() && storage->replay(ex);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return EXIT_FAILURE;
    const std::wstring log = ROVA_2_18::strings::utf8_to_utf16(argv[1]);
    const auto storage = messages_storage_t::get(basekit2::path_t(log));
    return record(storage) && replay(storage) ? EXIT_SUCCESS : EXIT_FAILURE;
}

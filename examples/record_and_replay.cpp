// Records two messages in a log and replays them: record_and_replay LOG
// A second run carries the messages of the first one over.
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

bool record(const boost::shared_ptr<messages_storage_t>& storage)
{
    const auto ex = velmo_ex_t::get(L"recorder", L"");
    ex->push_handler(storage);
    // Flags do not cross the channel. The handler that is pushed last is called first.
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
    ex->push_handler(make_handler([](const boost::shared_ptr<message_t>& msg) {
        std::wcout << plain_text(*msg) << L'\n';
        return true;
    }));
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

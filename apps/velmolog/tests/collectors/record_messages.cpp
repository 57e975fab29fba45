// Appends messages to a log: record_messages LOG COUNT. Their texts, severities and elements vary.
#include <velmoext1/velmoext1.h>

#include <rova/strings.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <string>

using namespace velmoext1;

namespace
{

const std::array<message_t::severity_t, 5> severities = {
    message_t::none, message_t::info, message_t::warning, message_t::error, message_t::critical};

std::wstring text_of(std::size_t number)
{
    const std::array<std::wstring, 5> texts = {L"plain", L"\u00e4 \u65e5", L"<&> \"'\\",
                                               L"two\nlines\ttab", std::wstring(33000, L'\u00e9')};
    return texts[number % texts.size()];
}

boost::shared_ptr<message_t> message_of(std::size_t number)
{
    message_builder_t message(L"type_" + std::to_wstring(number % 4));
    message.severity(severities[number % severities.size()]).source(L"audit");
    message.arg(L"number", number).arg(L"text", text_of(number));
    if (number % 2 == 0)
        message.element(L"timestamp", number % 4 == 0 ? L"2026-11-21T14:05:07Z" : L"noon");
    return message.build();
}

bool record(const basekit2::path_t& log, std::size_t count)
{
    const auto storage = messages_storage_t::get(log);
    const auto ex = velmo_ex_t::get(L"recorder", L"");
    ex->push_handler(storage);
    for (const auto severity : severities)
        ex->push_handler(make_flagger(severity, 1));
    if (!storage->start_recording())
        return false;
    velmo_adapter_t channel;
    channel.set_output_velmoext(ex);
    velmo_adapter_t sender;
    sender.set_output_velmo(&channel);
    for (std::size_t number = 0; number < count; ++number)
        sender.send_to_velmo(message_of(number));
    return storage->stop_recording();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return EXIT_FAILURE;
    const basekit2::path_t log(ROVA_2_18::strings::utf8_to_utf16(argv[1]));
    return record(log, std::strtoull(argv[2], nullptr, 10)) ? EXIT_SUCCESS : EXIT_FAILURE;
}

// Records messages with the types FIRST, FIRST + 1 and so on in LOG, at most COUNT of them, and
// stops. Pauses sometimes, so that it can be killed at any time. With KIND "unstable" some messages
// have a text that the next start changes.

#include <velmoext1/messages_storage.h>

#include <basekit2/path.h>
#include <rova/strings.h>

#include <boost/make_shared.hpp>

#include <chrono>
#include <string>
#include <thread>

using namespace velmoext_1_4_8;

namespace
{

boost::shared_ptr<message_t> make_message(unsigned long number, bool is_unstable)
{
    message_t::message_content_t content;
    const std::size_t size = number % 7 == 0 ? number * 7919 % 3000 : number % 5;
    content.args[L"text"] = std::wstring(size, L'x');
    if (is_unstable && number % 11 == 0)
        content.args[L"more"] = L"a & b";
    auto message = boost::make_shared<message_t>();
    message->set_content(content);
    message->set_type(std::to_wstring(number));
    message->set_severity(number % 3 == 0 ? message_t::none : message_t::info);
    message->set_flags(1);
    return message;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5)
        return 2;
    const unsigned long first = std::stoul(argv[2]);
    const unsigned long count = std::stoul(argv[3]);
    const bool is_unstable = std::string(argv[4]) == "unstable";
    const auto storage =
        messages_storage_t::get(basekit2::path_t(ROVA_2_18::strings::utf8_to_utf16(argv[1])));
    if (!storage->start_recording())
        return 1;
    for (unsigned long number = first; number != first + count; ++number) {
        storage->on_message(boost::shared_ptr<velmo_ex_t>(), make_message(number, is_unstable));
        if (number % 40 == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    storage->stop_recording();
    return 0;
}

// Records a file name with "&" and "Ž" in a log, and replays it unchanged: file_names LOG
#include <velmoext1/velmoext1.h>

#include <rova/strings.h>

#include <charconv>
#include <iostream>

using namespace velmoext1;

// Returns the name in ASCII: each byte that a log can change becomes %XX, as in a URL.
static std::wstring encode(const std::string& name)
{
    const std::wstring digits = L"0123456789ABCDEF";
    std::wstring text;
    for (const unsigned char byte : std::vector<unsigned char>(name.begin(), name.end()))
        if (byte < ' ' || byte > '~' || std::wstring(L"&<>\"'%").find(byte) != std::wstring::npos)
            text.append({L'%', digits[byte / 16], digits[byte % 16]});
        else
            text += byte;
    return text;
}

// Returns the name. Leaves text as it is if encode() does not write it.
static std::string decode(std::string text)
{
    for (auto at = text.find('%'); at < text.size(); at = text.find('%', at + 1)) {
        const char* const digits = text.c_str() + at + 1;
        unsigned char byte = 0;
        if (text.size() - at > 2 && std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2)
            text.replace(at, 3, 1, static_cast<char>(byte));
    }
    return text;
}

int main(int argc, char** argv)
{
    using namespace ROVA_2_18::strings;
    if (argc != 2)
        return EXIT_FAILURE;
    const auto ex = velmo_ex_t::get(L"player", L"");
    ex->push_handler(make_handler([](const boost::shared_ptr<message_t>& msg) {
        std::cout << utf16_to_utf8(plain_text(*msg)) << '\n';
        return true;
    }));
    ex->push_handler(make_handler([](const boost::shared_ptr<message_t>& msg) {
        auto content = msg->get_content();
        content.args[L"path"] = utf8_to_utf16(decode(utf16_to_utf8(content.args[L"path"])));
        msg->set_content(content);
        return false;
    }));
    message_builder_t message(L"file_large");
    message.flags(1).arg(L"path", encode("/srv/Tom & Žofie.txt"));
    const auto storage = messages_storage_t::get(basekit2::path_t(utf8_to_utf16(argv[1])));
    if (!storage->start_recording())
        return EXIT_FAILURE;
    storage->on_message(ex, message.build());
    storage->stop_recording();
    return storage->start_reading() && storage->replay(ex) ? EXIT_SUCCESS : EXIT_FAILURE;
}

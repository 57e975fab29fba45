// Records a message while the process or a thread ends, from the destructor of an object. The first
// argument selects the object; the second one is the log.

#include "support.h"

#include <velmoext1/messages_storage.h>

#include <rova/strings.h>

#include <cstdlib>
#include <map>
#include <string>
#include <thread>

using namespace velmoext_1_4_8;

namespace
{

message_ptr_t make_recorded(const std::wstring& type)
{
    const message_ptr_t message = make_message(type, message_t::info);
    message->set_content(
        make_content({{L"tool\xE9", L"a <b>"}}, {{L"n", L"not plain: \xE9 & \""}}));
    message->set_flags(1);
    return message;
}

// Ends the process at once if the serializer does not return an equal message.
void require_round_trip(const message_ptr_t& message)
{
    const message_ptr_t read = string_message_serializer_t::xml_string_to_message(
        string_message_serializer_t::message_to_xml_string(message));
    if (!read || !read->equal_to(message) ||
        read->get_content().args != message->get_content().args)
        std::_Exit(2);
}

class last_recorder_t
{
public:
    last_recorder_t() = default;
    last_recorder_t(const last_recorder_t&) = delete;
    last_recorder_t& operator=(const last_recorder_t&) = delete;
    ~last_recorder_t()
    {
        if (m_storage)
            record(L"last");
    }

    void use(const boost::shared_ptr<messages_storage_t>& storage) { m_storage = storage; }

private:
    void record(const std::wstring& type)
    {
        const message_ptr_t message = make_recorded(type);
        for (int i = 0; i < 3; ++i) {
            m_storage->on_message(boost::shared_ptr<velmo_ex_t>(), message);
            require_round_trip(message);
        }
        m_storage.reset();
    }

    boost::shared_ptr<messages_storage_t> m_storage;
};

last_recorder_t& static_recorder()
{
    static last_recorder_t recorder;
    return recorder;
}

last_recorder_t& thread_local_recorder()
{
    thread_local last_recorder_t recorder;
    return recorder;
}

void use_library(const boost::shared_ptr<messages_storage_t>& storage)
{
    const message_ptr_t message = make_recorded(L"first");
    require_round_trip(message);
    storage->on_message(boost::shared_ptr<velmo_ex_t>(), message);
}

// An object that is created before the library is used on this thread is destroyed after all that
// the library keeps for the thread.
void record_before_and_after(last_recorder_t& (*recorder)(), bool is_created_first,
                             const boost::shared_ptr<messages_storage_t>& storage)
{
    if (is_created_first)
        recorder();
    use_library(storage);
    recorder().use(storage);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 1;
    const std::string object = argv[1];
    const bool is_created_first = object.find("created_first") != std::string::npos;
    auto* const recorder =
        object.find("static") != std::string::npos ? static_recorder : thread_local_recorder;
    if (is_created_first && recorder == static_recorder)
        static_recorder();
    auto storage =
        messages_storage_t::get(basekit2::path_t(ROVA_2_18::strings::utf8_to_utf16(argv[2])));
    if (!storage->start_recording())
        return 1;
    if (object.find("other_thread") != std::string::npos)
        std::thread([&] { record_before_and_after(recorder, is_created_first, storage); }).join();
    else
        record_before_and_after(recorder, is_created_first, storage);
    return 0;
}

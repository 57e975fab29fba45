// Prints what a message costs in logs of three sizes: to record, to carry over, to replay; and how
// much memory a replay takes for each byte that it reads. Not a test: its figures are times.

#include "scratch_folder.h"
#include "support.h"

#include <velmoext1/messages_storage.h>

#include <cstdio>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace velmoext_1_4_8;

namespace
{

typedef boost::shared_ptr<messages_storage_t> storage_ptr;

struct counting_handler_t : base_handler_t
{
    using base_handler_t::on_message;
    bool on_message(boost::shared_ptr<velmo_ex_t> /*ex*/, message_ptr /*msg*/) override
    {
        ++m_count;
        return true;
    }
    int m_count = 0;
};

struct cost_t
{
    double microseconds;
    long kilobytes;
};

// What the step takes in a process of its own.
template <typename Step>
cost_t measure(const Step& step)
{
    const pid_t child = fork();
    if (child == 0) {
        step();
        _exit(0);
    }
    int status = 0;
    rusage usage = {};
    wait4(child, &status, 0, &usage);
    const auto microseconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec);
    };
    return {microseconds(usage.ru_utime) + microseconds(usage.ru_stime), usage.ru_maxrss};
}

void record(const storage_ptr& storage, int count)
{
    const auto message = make_message(
        make_content({{L"tool", L"growth"}}, {{L"path", L"/usr/share/doc"}, {L"size", L"1"}}));
    message->set_type(L"file_large");
    message->set_flags(1);
    storage->start_recording();
    for (int i = 0; i < count; ++i)
        storage->on_message(boost::shared_ptr<velmo_ex_t>(), message);
    storage->stop_recording();
}

void replay(const storage_ptr& storage, int count)
{
    const auto ex = velmo_ex_t::get(L"growth", L"");
    const auto handler = boost::make_shared<counting_handler_t>();
    ex->push_handler(handler);
    storage->start_reading();
    if (!storage->replay(ex) || handler->m_count != count)
        std::printf("a replay lost messages\n");
}

} // namespace

int main()
{
    std::printf("%10s %12s %12s %12s %14s\n", "messages", "record us", "carry us", "replay us",
                "memory / byte");
    for (const int count : {10000, 100000, 1000000}) {
        const scratch_folder_t folder;
        const auto get = [&](const std::string& leaf) {
            return messages_storage_t::get(basekit2::path_t(folder.wide_name(leaf)));
        };
        // What every process takes for the first message, whatever the length of its log.
        const cost_t first = measure([&] { record(get("one"), 1); });
        const cost_t first_replayed = measure([&] { replay(get("one"), 1); });
        const cost_t recorded = measure([&] { record(get("log"), count); });
        const cost_t carried = measure([&] { record(get("log"), 0); });
        const cost_t replayed = measure([&] { replay(get("log"), count); });
        const auto each = [&](const cost_t& cost) {
            return (cost.microseconds - first.microseconds) / count;
        };
        const auto bytes = static_cast<double>(std::filesystem::file_size(folder.name("log")));
        std::printf("%10d %12.2f %12.2f %12.2f %14.2f\n", count, each(recorded), each(carried),
                    each(replayed),
                    static_cast<double>(replayed.kilobytes - first_replayed.kilobytes) * 1024 /
                        bytes);
    }
    return 0;
}

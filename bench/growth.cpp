// Prints a table of how costs grow: the cost of a message, an argument or an object if there are
// few, and if there are many.
//
// bench_growth [--messages N] [--log-messages N]
// bench_growth --log-bytes BYTES      a replay of a log of that size, and a start on it
//
// A log of 10,000,000 messages takes 2.2 GB, and twice that while a recording starts on it. TMPDIR
// must have room for both.

#include "counting_handler.h"
#include "deliver.h"
#include "process_cost.h"
#include "run_threads.h"
#include "runner.h"
#include "scratch_folder.h"
#include "workload.h"

#include <velmoext1/messages_storage.h>
#include <velmoext1/string_message_serializer.h>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using namespace velmoext_1_4_8;
using bench::cost_t;
using bench::message_ptr_t;
using bench::require;
using bench::workload_t;

typedef boost::shared_ptr<messages_storage_t> storage_ptr_t;

const char* const constant = "1.1 or less";

const int short_rounds = 15;

// Returns many rounds for a small log, whose cost is near that of a process, and few for a long
// one.
int rounds_for(std::size_t messages)
{
    const std::size_t small = 10000;
    const std::size_t large = 2000000;
    if (messages <= small)
        return short_rounds;
    return messages <= large ? 3 : 1;
}

std::size_t few_messages(std::size_t many)
{
    return std::clamp<std::size_t>(many / 100, 1, 10000);
}

void print_heading()
{
    std::printf("| growth | with few | with many | ratio | goal |\n|---|---|---|---|---|\n");
}

struct figure_t
{
    std::size_t number;
    double value;
};

std::string to_text(const figure_t& figure)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.3f with %zu", figure.value, figure.number);
    return std::isnan(figure.value) ? "fails with " + std::to_string(figure.number) : text;
}

void print(const std::string& what, const figure_t& few, const figure_t& many, const char* goal)
{
    const double ratio = many.value / few.value;
    char text[32] = "-";
    if (std::isfinite(ratio))
        std::snprintf(text, sizeof text, "%.2f", ratio);
    std::printf("| %s | %s | %s | %s | %s |\n", what.c_str(), to_text(few).c_str(),
                to_text(many).c_str(), text, goal);
    std::fflush(stdout);
}

storage_ptr_t open_log(const scratch_folder_t& folder)
{
    return messages_storage_t::get(folder.wide_name("log.xml"));
}

void remove_log(const scratch_folder_t& folder)
{
    std::filesystem::remove(folder.name("log.xml"));
}

std::uintmax_t log_size(const scratch_folder_t& folder)
{
    return std::filesystem::file_size(folder.name("log.xml"));
}

void record(const scratch_folder_t& folder, const workload_t& workload, std::size_t count)
{
    const storage_ptr_t storage = open_log(folder);
    require(storage->start_recording(), "the log cannot be recorded into");
    for (std::size_t i = 0; i < count; ++i)
        storage->on_message(boost::shared_ptr<velmo_ex_t>(),
                            workload.messages()[i % workload.size()]);
    storage->stop_recording();
}

void carry_over(const scratch_folder_t& folder)
{
    const std::uintmax_t before = log_size(folder);
    const storage_ptr_t storage = open_log(folder);
    require(storage->start_recording(), "the log cannot be recorded into");
    storage->stop_recording();
    require(log_size(folder) >= before, "a start lost messages");
}

void replay(const scratch_folder_t& folder, std::size_t count)
{
    const auto handler = boost::make_shared<bench::counting_handler_t>();
    const auto ex = velmo_ex_t::get(L"bench", L"");
    ex->push_handler(handler);
    const storage_ptr_t storage = open_log(folder);
    storage->start_reading();
    require(storage->replay(ex) && handler->count() == count, "a replay lost messages");
}

// Writes a block of recorded messages repeatedly: recording a long log would take much longer.
class log_writer_t
{
public:
    explicit log_writer_t(std::size_t max_messages)
        : m_messages(std::min<std::size_t>(max_messages, block_messages))
    {
        const scratch_folder_t folder;
        record(folder, workload_t(m_messages), m_messages);
        const std::string text = folder.read("log.xml");
        const std::size_t first = text.find(" <msg");
        const std::size_t end = text.rfind("</log>");
        m_head = text.substr(0, first);
        m_block = text.substr(first, end - first);
        m_tail = text.substr(end);
    }

    // Rounds up to whole blocks.
    std::size_t round_up(std::size_t count) const
    {
        return (count + m_messages - 1) / m_messages * m_messages;
    }

    std::size_t count_in(std::uintmax_t bytes) const
    {
        return round_up(static_cast<std::size_t>(bytes / m_block.size() + 1) * m_messages);
    }

    void write(const scratch_folder_t& folder, std::size_t count) const
    {
        std::ofstream file(folder.name("log.xml"), std::ios::binary);
        file << m_head;
        for (std::size_t written = 0; written < count; written += m_messages)
            file << m_block;
        file << m_tail;
        file.close();
        require(file.good(), "the log cannot be written: is there room for it twice?");
    }

private:
    static constexpr std::size_t block_messages = 1000;

    std::size_t m_messages; ///< in a block
    std::string m_head;
    std::string m_block;
    std::string m_tail;
};

double record_cost(std::size_t count)
{
    const workload_t workload(1000);
    const scratch_folder_t folder;
    const cost_t cost = bench::measure(
        rounds_for(count), [&] { record(folder, workload, count); }, [&] { remove_log(folder); });
    return cost.cpu / static_cast<double>(count);
}

void show_recording(std::size_t many)
{
    const std::size_t few = few_messages(many);
    print("record, us per message", {few, record_cost(few)}, {many, record_cost(many)}, constant);
}

// Returns NAN if the library refuses the log, since that is a result too.
cost_t try_measure(int rounds, const std::function<void()>& step,
                   const std::function<void()>& prepare)
{
    try {
        return bench::measure(rounds, step, prepare);
    } catch (const std::exception&) {
        return {NAN, NAN, NAN};
    }
}

struct reading_t
{
    figure_t time;   ///< microseconds per message
    figure_t memory; ///< MiB more than for a log of one message
};

// Writes the log before each round, since a start replaces it.
reading_t measure_reading(const log_writer_t& writer, std::size_t count,
                          void (*read)(const scratch_folder_t& folder, std::size_t count))
{
    const double mebibyte = 1024.0 * 1024.0;
    const scratch_folder_t folder;
    const log_writer_t one(1);
    const cost_t baseline = bench::measure(
        1, [&] { read(folder, 1); }, [&] { one.write(folder, 1); });
    const cost_t cost = try_measure(
        rounds_for(count), [&] { read(folder, count); }, [&] { writer.write(folder, count); });
    return {{count, cost.cpu / static_cast<double>(count)},
            {count, (cost.memory - baseline.memory) / mebibyte}};
}

void show_reading(const std::string& what, const log_writer_t& writer, std::size_t few,
                  std::size_t many, void (*read)(const scratch_folder_t& folder, std::size_t count))
{
    const reading_t few_reading = measure_reading(writer, few, read);
    const reading_t many_reading = measure_reading(writer, many, read);
    print(what + ", us per message", few_reading.time, many_reading.time, constant);
    print(what + ", peak memory in MiB", few_reading.memory, many_reading.memory,
          "64 or less each");
}

void show_logs(const log_writer_t& writer, std::size_t many)
{
    const std::size_t few = writer.round_up(few_messages(many));
    show_reading("replay", writer, few, many, replay);
    show_reading("carry over", writer, few, many,
                 [](const scratch_folder_t& folder, std::size_t) { carry_over(folder); });
}

std::wstring encode_args(std::size_t count)
{
    message_t::message_content_t content;
    for (std::size_t i = 0; i < count; ++i)
        content.args.emplace(L"argument_" + std::to_wstring(i), L"/srv/data/" + std::to_wstring(i));
    const auto message = boost::make_shared<message_t>();
    message->set_type(L"many");
    message->set_content(content);
    return string_message_serializer_t::message_to_xml_string(message);
}

double decode_cost(std::size_t args, std::size_t all)
{
    const std::wstring text = encode_args(args);
    const cost_t cost = bench::measure(short_rounds, [&] {
        for (std::size_t done = 0; done < all; done += args)
            require(!string_message_serializer_t::xml_string_to_message(text)->empty(),
                    "decoded something else");
    });
    return cost.cpu / static_cast<double>(all);
}

void show_decode(std::size_t messages)
{
    const std::size_t all = messages / 100 * 20;
    const std::size_t many = std::max<std::size_t>(messages / 100, 10);
    print("decode, us per argument", {10, decode_cost(10, all)}, {many, decode_cost(many, all)},
          "1.5 or less");
}

double object_cost(std::size_t count, std::size_t all)
{
    std::vector<boost::shared_ptr<velmo_ex_t>> objects(count);
    const cost_t cost = bench::measure(short_rounds, [&] {
        for (std::size_t done = 0; done < all; done += count) {
            for (std::size_t i = 0; i < count; ++i)
                objects[i] = velmo_ex_t::get(L"object_" + std::to_wstring(i), L"");
            for (auto& object : objects)
                object.reset();
        }
    });
    return cost.cpu / static_cast<double>(all);
}

void show_objects(std::size_t messages)
{
    const std::size_t many = std::max<std::size_t>(messages / 50, 200);
    print("extension objects created and destroyed, us per object", {200, object_cost(200, many)},
          {many, object_cost(many, many)}, "3 or less");
}

void deliver_many(std::size_t count)
{
    const auto ex = velmo_ex_t::get(velmo_ex_t::generate_id(L"thread"), L"");
    ex->push_handler(boost::make_shared<bench::counting_handler_t>());
    const auto message = boost::make_shared<message_t>();
    for (std::size_t i = 0; i < count; ++i)
        bench::deliver(ex, message);
}

// Delivers the same total number of messages for any number of threads.
cost_t thread_cost(std::size_t threads, std::size_t all)
{
    return bench::measure(short_rounds, [&] {
        run_threads(threads, [&](std::size_t) { deliver_many(all / threads); });
    });
}

void show_threads(std::size_t messages)
{
    const std::size_t all = messages * 4;
    const auto thousands = static_cast<double>(all) / 1000;
    const cost_t one = thread_cost(1, all);
    const cost_t eight = thread_cost(8, all);
    print("threads that deliver into objects of their own, CPU us per 1,000 messages",
          {1, one.cpu / thousands}, {8, eight.cpu / thousands}, "about 1");
    print("the same, elapsed us per 1,000 messages", {1, one.elapsed / thousands},
          {8, eight.elapsed / thousands}, "1 by the number of cores");
}

struct options_t
{
    std::size_t messages = 1000000;
    std::size_t log_messages = 0; ///< 0: as many as `messages`
    std::uintmax_t log_bytes = 0;
};

options_t parse_options(int argc, char** argv)
{
    options_t options;
    for (int at = 1; at < argc; at += 2) {
        const std::string name = argv[at];
        const long long count = at + 1 < argc ? std::strtoll(argv[at + 1], nullptr, 10) : 0;
        require(count > 0, "usage: bench_growth [--messages N] [--log-messages N]\n"
                           "       bench_growth --log-bytes BYTES");
        if (name == "--messages")
            options.messages = static_cast<std::size_t>(count);
        else if (name == "--log-messages")
            options.log_messages = static_cast<std::size_t>(count);
        else if (name == "--log-bytes")
            options.log_bytes = static_cast<std::uintmax_t>(count);
        else
            throw std::invalid_argument("no such option: " + name);
    }
    if (options.log_messages == 0)
        options.log_messages = options.messages;
    return options;
}

void show_long_log(std::uintmax_t bytes)
{
    const log_writer_t writer(1000);
    const std::size_t count = writer.count_in(bytes);
    show_logs(writer, count);
}

void show_all(const options_t& options)
{
    const log_writer_t writer(few_messages(options.log_messages));
    show_recording(options.log_messages);
    show_logs(writer, writer.round_up(options.log_messages));
    show_decode(options.messages);
    show_objects(options.messages);
    show_threads(options.messages);
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const options_t options = parse_options(argc, argv);
        bench::prefer_memory_files();
        print_heading();
        if (options.log_bytes > 0)
            show_long_log(options.log_bytes);
        else
            show_all(options);
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_growth: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
